#include "hardware/windows_os_manager.h"

#include <cstdint>
#include <memory>

#include "hardware/unique_handle.h"
#include "storage/storage_paths.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

constexpr DWORD kReadBufferSize = 8192;

// Reads at most 8191 bytes into `content`. On false `content` is untouched, and `error` says why,
// or nothing if the file is empty. A missing file is left behind empty.
bool ReadWholeFile(const std::wstring& path, std::string& content, std::string& error) {
  const auto buffer = std::make_unique<char[]>(kReadBufferSize);
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) {
    error = "Can not open file to read";
    return false;
  }
  DWORD size = 0;
  if (ReadFile(file.get(), buffer.get(), kReadBufferSize - 1, &size, nullptr) == 0) {
    error = "Unable to read from file";
    return false;
  }
  if (size == 0) return false;
  content.assign(buffer.get(), size);
  return true;
}

// Writes all of `content` from the start of the file. On false `error` says why, or nothing if only
// a part was written.
bool WriteWholeFile(const std::wstring& path, const std::string& content, std::string& error) {
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) {
    error = "Can not open file to write";
    return false;
  }
  DWORD written = 0;
  if (WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written,
                nullptr) == 0) {
    error = "Unable to write to file";
    return false;
  }
  return written == content.size();
}

}  // namespace

bool WindowsOSManager::ReadCommonDeviceId(std::string& id, const HidFormatVersion& version) {
  return ReadDeviceId(CommonDeviceIdPath(version), id);
}

bool WindowsOSManager::ReadUserDeviceId(std::string& id, const HidFormatVersion& version) {
  return ReadDeviceId(UserDeviceIdPath(version), id);
}

bool WindowsOSManager::WriteCommonDeviceId(const std::string& id, const HidFormatVersion& version) {
  return WriteDeviceId(CommonFolderPath(false), CommonDeviceIdPath(version), id);
}

bool WindowsOSManager::WriteUserDeviceId(const std::string& id, const HidFormatVersion& version) {
  return WriteDeviceId(UserFolderPath(false), UserDeviceIdPath(version), id);
}

void WindowsOSManager::DeleteUserDeviceId(const HidFormatVersion& version) {
  DeleteFileW(ToWide(UserDeviceIdPath(version)).c_str());
}

bool WindowsOSManager::ReadDeviceId(const std::string& path, std::string& id) {
  std::string error;
  if (ReadWholeFile(ToWide(path), id, error) && !id.empty()) return true;
  log_->Write(error, LogLevel::Error);
  return false;
}

bool WindowsOSManager::WriteDeviceId(const std::string& folder, const std::string& path,
                                     const std::string& id) {
  const std::wstring wide_folder = ToWide(folder);
  const std::wstring wide_path = ToWide(path);
  // The file goes first: OPEN_ALWAYS does not truncate, and a shorter id would keep the old tail.
  DeleteFileW(wide_path.c_str());
  CreateDirectoryW(wide_folder.c_str(), nullptr);
  std::string error;
  const bool written = WriteWholeFile(wide_path, id, error);
  if (!written) log_->Write(error, LogLevel::Error);
  return written;
}

}  // namespace system_info
