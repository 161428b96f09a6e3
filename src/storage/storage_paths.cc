#include "storage/storage_paths.h"

#include <array>
#include <filesystem>
#include <fstream>

#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr const char* kCurrentFolderName = "BrindleQuayWorks";
constexpr const char* kOldFolderName = "Fennel";

constexpr HidFormatVersion kFirstWithOwnFile(2, 0);

std::string FolderPath(int folder_id, bool use_old_name) {
  char root[MAX_PATH] = {};
  if (SHGetFolderPathA(nullptr, folder_id, nullptr, SHGFP_TYPE_CURRENT, root) != S_OK) return {};
  return root + PathSeparator() + (use_old_name ? kOldFolderName : kCurrentFolderName);
}

}  // namespace

std::string CommonFolderPath(bool use_old_name) {
  return FolderPath(CSIDL_COMMON_APPDATA, use_old_name);
}

std::string UserFolderPath(bool use_old_name) { return FolderPath(CSIDL_APPDATA, use_old_name); }

const std::string& PathSeparator() {
  static const std::string kSeparator(
      1, static_cast<char>(std::filesystem::path::preferred_separator));
  return kSeparator;
}

std::string DeviceIdFileName(HidFormatVersion version) {
  static const std::string kFirstFileName = "device.id";
  static const std::string kSecondFileName = "device.idv2";
  return version < kFirstWithOwnFile ? kFirstFileName : kSecondFileName;
}

std::string CommonDeviceIdPath(HidFormatVersion version) {
  return CommonFolderPath(false) + PathSeparator() + DeviceIdFileName(version);
}

std::string UserDeviceIdPath(HidFormatVersion version) {
  return UserFolderPath(false) + PathSeparator() + DeviceIdFileName(version);
}

bool PathExists(const std::string& path) {
  struct _stat64i32 status = {};
  return _stat64i32(path.c_str(), &status) == 0;
}

bool IsDirectory(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool RemoveFile(const std::string& path) { return DeleteFileA(path.c_str()) != 0; }

bool EnsureDirectory(const std::string& path) {
  if (IsDirectory(path)) return true;
  const std::size_t separator = path.rfind(PathSeparator());
  if (separator != std::string::npos && !EnsureDirectory(path.substr(0, separator))) return false;
  if (CreateDirectoryA(path.c_str(), nullptr) != 0) return true;
  return GetLastError() == ERROR_ALREADY_EXISTS;
}

bool CopyFileContents(const std::string& source, const std::string& target, bool overwrite) {
  if (!PathExists(source)) return false;
  if (PathExists(target) && (!overwrite || !RemoveFile(target))) return false;
  std::ifstream input(source, std::ios::binary);
  // With a buffer of its own the stream needs no memory once there is a target.
  std::array<char, 4096> buffer = {};
  std::ofstream output;
  output.rdbuf()->pubsetbuf(buffer.data(), buffer.size());
  output.open(target, std::ios::binary | std::ios::trunc);
  output << input.rdbuf();
  return true;
}

}  // namespace system_info
