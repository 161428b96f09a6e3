// A replacement for the operating system under the file operations, for dry runs of the library's
// own code.
//
// Only the program has overlays; they are compiled out of the shared library. An overlay applies to
// the thread that set it.

#ifndef DEVICEID_SUPPORT_FILE_OVERLAY_H_
#define DEVICEID_SUPPORT_FILE_OVERLAY_H_

#include <string>

namespace system_info {

// The result of an operation on a whole file.
enum class WholeFile { kNotOpened, kFailed, kDone };

enum class NewFolder { kMade, kExists, kFailed };

// The operations of support/file_operations.h, each as the system would answer it to this account.
class FileOverlay {
 public:
  FileOverlay() = default;
  FileOverlay(const FileOverlay&) = delete;
  FileOverlay& operator=(const FileOverlay&) = delete;
  virtual ~FileOverlay() = default;

  virtual bool PathExists(const std::string& path) = 0;
  virtual bool IsDirectory(const std::string& path) = 0;
  virtual bool RemoveFile(const std::string& path) = 0;
  virtual bool RemoveFile(const std::wstring& path) = 0;
  virtual NewFolder MakeFolder(const std::string& path) = 0;
  virtual NewFolder MakeFolder(const std::wstring& path) = 0;

  // Replaces `content` by the first 8191 bytes of the file; empty for an empty file. Creates a
  // missing file, empty.
  virtual WholeFile ReadWholeFile(const std::wstring& path, std::string& content) = 0;
  // Overwrites the start of the file without truncating it. Clears `complete` if the system would
  // write only a part of `content`.
  virtual WholeFile WriteWholeFile(const std::wstring& path, const std::string& content,
                                   bool& complete) = 0;

  // Both return a descriptor, or -1. The second creates or truncates the file.
  virtual int OpenToRead(const std::string& path) = 0;
  virtual int OpenToWrite(const std::string& path) = 0;
  // The number of bytes, 0 at the end of the file, or -1 on failure.
  virtual int Read(int file, char* bytes, unsigned size) = 0;
  virtual int Write(int file, const char* bytes, unsigned size) = 0;
  virtual void Close(int file) = 0;
};

#if defined(DEVICEID_WITH_FILE_OVERLAY)

// The overlay of this thread, or null.
FileOverlay* PresentFileOverlay();

// Sets the overlay of this thread, which may be null, and returns the previous one.
FileOverlay* SetFileOverlay(FileOverlay* overlay);

#else

constexpr FileOverlay* PresentFileOverlay() { return nullptr; }

#endif

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_FILE_OVERLAY_H_
