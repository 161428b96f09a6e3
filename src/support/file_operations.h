// Every operation of the library on files and folders. Nothing else in the library opens, reads,
// writes, deletes or makes any.
//
// The operations on the device id files take wide paths and open files with restrictive share
// modes. All others take the operating system's narrow paths and share freely.

#ifndef DEVICEID_SUPPORT_FILE_OPERATIONS_H_
#define DEVICEID_SUPPORT_FILE_OPERATIONS_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace system_info {

// True for files and folders.
bool PathExists(const std::string& path);

bool IsDirectory(const std::string& path);

// True if this call deleted the file.
bool RemoveFile(const std::string& path);
bool RemoveFile(const std::wstring& path);

// Creates the folder `path` and none above it. True if it was created.
bool CreateFolder(const std::wstring& path);

// Creates the folder `path` with all its missing parents. True also if something, a file included,
// is there already. What was created stays when a later step fails.
bool EnsureDirectory(const std::string& path);

// Copies the bytes of `source` to `target`. False if there is no `source`, or if there is a
// `target` and `overwrite` is false or its removal fails. Failures to read or write the bytes do
// not change the result.
bool CopyFileContents(const std::string& source, const std::string& target, bool overwrite);

// Reads at most 8191 bytes into `content`. On false `content` is untouched, and `error` has the
// reason, or is unchanged if the file is empty. Creates a missing file, empty.
bool ReadWholeFile(const std::wstring& path, std::string& content, std::string& error);

// Writes all of `content` from the start of the file, without truncating it. On false `error` has
// the reason, or is unchanged if only a part was written.
bool WriteWholeFile(const std::wstring& path, const std::string& content, std::string& error);

// A file that is read as bytes while others may read and write it.
class InputFile {
 public:
  explicit InputFile(const std::string& path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  bool is_open() const { return file_ >= 0; }

  // Reads the next `size` bytes into `bytes`, or fewer at the end of the file or after a failure.
  // Returns their number.
  std::size_t Read(char* bytes, std::size_t size);

  // True if a read failed.
  bool failed() const { return failed_; }

  void Close();

 private:
  void Fill();

  int file_;
  bool failed_ = false;
  std::array<char, 4096> buffer_;
  std::size_t begin_ = 0;  // The unread part of the buffer.
  std::size_t end_ = 0;
};

// A file that is written as bytes while others may read and write it. Opening creates or truncates
// the file. Later operations allocate no memory.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  bool is_open() const { return file_ >= 0; }

  // True if all of `bytes` were written.
  bool Write(std::string_view bytes);

 private:
  int file_;
};

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_FILE_OPERATIONS_H_
