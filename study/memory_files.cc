#include "study/memory_files.h"

#include <algorithm>

namespace system_info {
namespace {

std::string Narrow(const std::wstring& path) {
  std::string narrow;
  for (const wchar_t c : path) narrow += static_cast<char>(c);
  return narrow;
}

}  // namespace

void MemoryFiles::Use(StoredFiles& files, const std::string& read_only_folder) {
  files_ = &files;
  read_only_folder_ = read_only_folder;
}

bool MemoryFiles::Writable(const std::string& path) const {
  return read_only_folder_.empty() || !path.starts_with(read_only_folder_);
}

bool MemoryFiles::RemoveFile(const std::string& path) {
  return Writable(path) && files_->erase(path) != 0;
}

bool MemoryFiles::RemoveFile(const std::wstring& path) { return RemoveFile(Narrow(path)); }

NewFolder MemoryFiles::MakeFolder(const std::string& /*path*/) { return NewFolder::kExists; }

NewFolder MemoryFiles::MakeFolder(const std::wstring& /*path*/) { return NewFolder::kExists; }

WholeFile MemoryFiles::ReadWholeFile(const std::wstring& path, std::string& content) {
  const std::string name = Narrow(path);
  if (!files_->contains(name) && !Writable(name)) return WholeFile::kNotOpened;
  content = (*files_)[name];
  return WholeFile::kDone;
}

WholeFile MemoryFiles::WriteWholeFile(const std::wstring& path, const std::string& content,
                                      bool& /*complete*/) {
  const std::string name = Narrow(path);
  if (!Writable(name)) return WholeFile::kNotOpened;
  (*files_)[name] = content;
  return WholeFile::kDone;
}

int MemoryFiles::OpenToRead(const std::string& path) {
  return files_->contains(path) ? Open(path) : -1;
}

int MemoryFiles::OpenToWrite(const std::string& path) {
  if (!Writable(path)) return -1;
  (*files_)[path].clear();
  return Open(path);
}

int MemoryFiles::Open(const std::string& path) {
  open_.push_back({path});
  return static_cast<int>(open_.size()) - 1;
}

int MemoryFiles::Read(int file, char* bytes, unsigned size) {
  OpenFile& open = open_.at(static_cast<std::size_t>(file));
  const std::string& content = (*files_)[open.path];
  const std::size_t count = content.copy(bytes, size, std::min(open.position, content.size()));
  open.position += count;
  return static_cast<int>(count);
}

int MemoryFiles::Write(int file, const char* bytes, unsigned size) {
  (*files_)[open_.at(static_cast<std::size_t>(file)).path].append(bytes, size);
  return static_cast<int>(size);
}

// The library has one file open at a time.
void MemoryFiles::Close(int /*file*/) { open_.clear(); }

}  // namespace system_info
