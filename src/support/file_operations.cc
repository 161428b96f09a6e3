#include "support/file_operations.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/unique_handle.h"
#include "platform/windows_api.h"
#include "support/file_overlay.h"
#include "support/folder_paths.h"

namespace system_info {
namespace {

constexpr DWORD kReadBufferSize = 8192;

// The largest size that one call of the runtime library accepts on every system.
constexpr std::size_t kLargestWrite = 1U << 30;

// The operations on shared files, by descriptors. Each returns -1 on failure.

int OpenShared(const std::string& path, int flags) {
  return _sopen(path.c_str(), flags | _O_BINARY, _SH_DENYNO, _S_IREAD | _S_IWRITE);
}

int OpenToRead(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->OpenToRead(path);
  return OpenShared(path, _O_RDONLY);
}

int OpenToWrite(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->OpenToWrite(path);
  return OpenShared(path, _O_WRONLY | _O_CREAT | _O_TRUNC);
}

int ReadShared(int file, char* bytes, unsigned size) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->Read(file, bytes, size);
  return _read(file, bytes, size);
}

int WriteShared(int file, const char* bytes, unsigned size) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->Write(file, bytes, size);
  return _write(file, bytes, size);
}

void CloseShared(int file) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->Close(file);
  _close(file);
}

NewFolder MakeFolder(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->MakeFolder(path);
  if (CreateDirectoryA(path.c_str(), nullptr) != 0) return NewFolder::kMade;
  return GetLastError() == ERROR_ALREADY_EXISTS ? NewFolder::kExists : NewFolder::kFailed;
}

// Leaves `content` untouched if the file cannot be read.
WholeFile Read(const std::wstring& path, std::string& content) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->ReadWholeFile(path, content);
  const auto buffer = std::make_unique<char[]>(kReadBufferSize);
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) return WholeFile::kNotOpened;
  DWORD size = 0;
  if (ReadFile(file.get(), buffer.get(), kReadBufferSize - 1, &size, nullptr) == 0) {
    return WholeFile::kFailed;
  }
  content.assign(buffer.get(), size);
  return WholeFile::kDone;
}

// Clears `complete` if the system wrote only a part of `content`.
WholeFile Write(const std::wstring& path, const std::string& content, bool& complete) {
  if (FileOverlay* overlay = PresentFileOverlay()) {
    return overlay->WriteWholeFile(path, content, complete);
  }
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) return WholeFile::kNotOpened;
  const auto size = static_cast<DWORD>(content.size());
  DWORD written = 0;
  if (WriteFile(file.get(), content.data(), size, &written, nullptr) == 0) {
    return WholeFile::kFailed;
  }
  complete = written == size;
  return WholeFile::kDone;
}

}  // namespace

bool PathExists(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->PathExists(path);
  struct _stat64i32 status = {};
  return _stat64i32(path.c_str(), &status) == 0;
}

bool IsDirectory(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->IsDirectory(path);
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool RemoveFile(const std::string& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->RemoveFile(path);
  return DeleteFileA(path.c_str()) != 0;
}

bool RemoveFile(const std::wstring& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) return overlay->RemoveFile(path);
  return DeleteFileW(path.c_str()) != 0;
}

bool CreateFolder(const std::wstring& path) {
  if (FileOverlay* overlay = PresentFileOverlay()) {
    return overlay->MakeFolder(path) == NewFolder::kMade;
  }
  return CreateDirectoryW(path.c_str(), nullptr) != 0;
}

bool EnsureDirectory(const std::string& path) {
  if (IsDirectory(path)) return true;
  const std::size_t separator = path.rfind(PathSeparator());
  if (separator != std::string::npos && !EnsureDirectory(path.substr(0, separator))) return false;
  return MakeFolder(path) != NewFolder::kFailed;
}

bool CopyFileContents(const std::string& source, const std::string& target, bool overwrite) {
  if (!PathExists(source)) return false;
  if (PathExists(target) && (!overwrite || !RemoveFile(target))) return false;
  InputFile input(source);
  OutputFile output(target);
  std::array<char, 4096> buffer;
  std::size_t count = 0;
  do {
    count = input.Read(buffer.data(), buffer.size());
  } while (count > 0 && output.Write({buffer.data(), count}));
  return true;
}

bool ReadWholeFile(const std::wstring& path, std::string& content, std::string& error) {
  std::string bytes;
  switch (Read(path, bytes)) {
    case WholeFile::kNotOpened:
      error = "Can not open file to read";
      return false;
    case WholeFile::kFailed:
      error = "Unable to read from file";
      return false;
    case WholeFile::kDone:
      break;
  }
  if (bytes.empty()) return false;
  content = std::move(bytes);
  return true;
}

bool WriteWholeFile(const std::wstring& path, const std::string& content, std::string& error) {
  bool complete = true;
  switch (Write(path, content, complete)) {
    case WholeFile::kNotOpened:
      error = "Can not open file to write";
      return false;
    case WholeFile::kFailed:
      error = "Unable to write to file";
      return false;
    case WholeFile::kDone:
      break;
  }
  return complete;
}

InputFile::InputFile(const std::string& path) : file_(OpenToRead(path)) {}

InputFile::~InputFile() { Close(); }

std::size_t InputFile::Read(char* bytes, std::size_t size) {
  std::size_t count = 0;
  while (count < size) {
    if (begin_ == end_) Fill();
    if (begin_ == end_) break;
    const std::size_t taken = std::min(size - count, end_ - begin_);
    std::memcpy(bytes + count, buffer_.data() + begin_, taken);
    begin_ += taken;
    count += taken;
  }
  return count;
}

void InputFile::Fill() {
  if (!is_open() || failed_) return;
  const int count = ReadShared(file_, buffer_.data(), static_cast<unsigned>(buffer_.size()));
  failed_ = count < 0;
  begin_ = 0;
  end_ = failed_ ? 0 : static_cast<std::size_t>(count);
}

void InputFile::Close() {
  if (is_open()) CloseShared(file_);
  file_ = -1;
}

OutputFile::OutputFile(const std::string& path) : file_(OpenToWrite(path)) {}

OutputFile::~OutputFile() {
  if (is_open()) CloseShared(file_);
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file
bool OutputFile::Write(std::string_view bytes) {
  while (is_open() && !bytes.empty()) {
    const auto size = static_cast<unsigned>(std::min(bytes.size(), kLargestWrite));
    const int count = WriteShared(file_, bytes.data(), size);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return is_open();
}

}  // namespace system_info
