// The files of a made-up machine, in memory. All folders are there.

#ifndef DEVICEID_STUDY_MEMORY_FILES_H_
#define DEVICEID_STUDY_MEMORY_FILES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "study/computer.h"
#include "support/file_overlay.h"

namespace system_info {

class MemoryFiles final : public FileOverlay {
 public:
  // The files of the next calls. Nothing below `read_only_folder` can be written.
  void Use(StoredFiles& files, const std::string& read_only_folder);

  bool PathExists(const std::string& path) override { return files_->contains(path); }
  bool IsDirectory(const std::string& path) override { return !files_->contains(path); }
  bool RemoveFile(const std::string& path) override;
  bool RemoveFile(const std::wstring& path) override;
  NewFolder MakeFolder(const std::string& path) override;
  NewFolder MakeFolder(const std::wstring& path) override;
  WholeFile ReadWholeFile(const std::wstring& path, std::string& content) override;
  WholeFile WriteWholeFile(const std::wstring& path, const std::string& content,
                           bool& complete) override;
  int OpenToRead(const std::string& path) override;
  int OpenToWrite(const std::string& path) override;
  int Read(int file, char* bytes, unsigned size) override;
  int Write(int file, const char* bytes, unsigned size) override;
  void Close(int file) override;

 private:
  struct OpenFile {
    std::string path;
    std::size_t position = 0;
  };

  bool Writable(const std::string& path) const;
  int Open(const std::string& path);

  StoredFiles* files_ = nullptr;
  std::string read_only_folder_;
  std::vector<OpenFile> open_;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_MEMORY_FILES_H_
