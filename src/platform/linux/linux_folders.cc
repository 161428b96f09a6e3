#include "platform/linux/linux_folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <vector>

#include "platform/linux/runtime_api.h"

namespace system_info {
namespace {

// The folder itself or the nearest one above it that exists.
bool BelongsToUser(std::filesystem::path folder) {
  struct stat status = {};
  while (stat(folder.c_str(), &status) != 0) {
    if (errno != ENOENT || !folder.has_relative_path()) return false;
    folder = folder.parent_path();
  }
  return S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

// The library widens some paths on their way to a file call. A path that the locale of the process
// cannot take would name another file there.
bool SurvivesWidening(const std::string& path) {
  std::vector<wchar_t> wide(path.size() + 1);
  std::mbstate_t state = {};
  const char* rest = path.c_str();
  return (mbsrtowcs)(wide.data(), &rest, wide.size(), &state) != static_cast<std::size_t>(-1);
}

// Without separators at its end. None if the library cannot use it.
std::optional<std::string> UsableFolder(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  for (const auto& part : std::filesystem::path(path)) {
    if (part == "..") return std::nullopt;
  }
  if (!SurvivesWidening(path)) return std::nullopt;
  return path;
}

// An environment that somebody else prepared must not choose where the state lives.
std::optional<std::string> FolderFromEnvironment(const char* name) {
  const char* value = secure_getenv(name);
  if (value == nullptr || *value != '/' || !BelongsToUser(value)) return std::nullopt;
  return UsableFolder(value);
}

std::optional<std::string> HomeFromPasswordDatabase() {
  std::vector<char> buffer(1024);
  passwd entry = {};
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  if (found == nullptr || *entry.pw_dir != '/') return std::nullopt;
  return UsableFolder(entry.pw_dir);
}

}  // namespace

std::optional<std::string> FindCommonRoot(const std::string& root) {
  const std::string folder = root + "/var/lib";
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  return folder;
}

std::optional<std::string> FindUserRoot() {
  std::optional<std::string> folder = FolderFromEnvironment("XDG_DATA_HOME");
  if (!folder) {
    folder = FolderFromEnvironment("HOME");
    if (!folder) folder = HomeFromPasswordDatabase();
    if (!folder) return std::nullopt;
    *folder += "/.local/share";
  }
  std::error_code failure;
  std::filesystem::create_directories(*folder, failure);
  return folder;
}

}  // namespace system_info
