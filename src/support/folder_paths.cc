#include "support/folder_paths.h"

#include <filesystem>

#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr const char* kCurrentFolderName = "BrindleQuayWorks";
constexpr const char* kOldFolderName = "Fennel";

std::string FolderPath(int folder_id, bool use_old_name) {
  char root[MAX_PATH] = {};
  if (SHGetFolderPathA(nullptr, folder_id, nullptr, SHGFP_TYPE_CURRENT, root) != S_OK) return {};
  return std::string(root) + PathSeparator() + (use_old_name ? kOldFolderName : kCurrentFolderName);
}

}  // namespace

std::string CommonFolderPath(bool use_old_name) {
  return FolderPath(CSIDL_COMMON_APPDATA, use_old_name);
}

std::string UserFolderPath(bool use_old_name) { return FolderPath(CSIDL_APPDATA, use_old_name); }

char PathSeparator() { return static_cast<char>(std::filesystem::path::preferred_separator); }

}  // namespace system_info
