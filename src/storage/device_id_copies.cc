#include "storage/device_id_copies.h"

#include "hardware/windows_os_manager.h"
#include "support/file_operations.h"
#include "support/folder_paths.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFirstWithOwnFile(2, 0);

}  // namespace

std::string DeviceIdFileName(HidFormatVersion version) {
  return version < kFirstWithOwnFile ? "device.id" : "device.idv2";
}

std::string CommonDeviceIdPath(HidFormatVersion version) {
  return CommonFolderPath(false) + PathSeparator() + DeviceIdFileName(version);
}

std::string UserDeviceIdPath(HidFormatVersion version) {
  return UserFolderPath(false) + PathSeparator() + DeviceIdFileName(version);
}

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
  RemoveFile(ToWide(UserDeviceIdPath(version)));
}

bool WindowsOSManager::ReadDeviceId(const std::string& path, std::string& id) {
  std::string error;
  if (ReadWholeFile(ToWide(path), id, error)) return true;
  log_->Write(error, LogLevel::Error);
  return false;
}

bool WindowsOSManager::WriteDeviceId(const std::string& folder, const std::string& path,
                                     const std::string& id) {
  const std::wstring wide_folder = ToWide(folder);
  const std::wstring wide_path = ToWide(path);
  // The file is deleted first: opening does not truncate it, and a shorter id would keep the old
  // tail.
  RemoveFile(wide_path);
  CreateFolder(wide_folder);
  std::string error;
  const bool written = WriteWholeFile(wide_path, id, error);
  if (!written) log_->Write(error, LogLevel::Error);
  return written;
}

}  // namespace system_info
