#include "platform/linux/linux_folders.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cwchar>
#include <string_view>
#include <vector>

#include "platform/linux/out_of_resources.h"
#include "platform/linux/runtime_api.h"

namespace system_info {
namespace {

// The variable that named the folder in this thread's last call of FindUserRoot, or null. Only a
// pointer: a library has little thread-local storage.
thread_local const char* naming_variable = nullptr;

bool IsBelow(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string Parent(const std::string& path) { return path.substr(0, path.rfind('/')); }

// A handle of a folder if it belongs to this user; else an invalid one, with the reason in errno.
Descriptor OpenOwnFolder(const std::string& path) {
  Descriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status = {};
  if (!folder.valid() || fstat(folder.get(), &status) != 0) return Descriptor(-1);
  if (status.st_uid == geteuid()) return folder;
  errno = EACCES;
  return Descriptor(-1);
}

// The folder itself or the nearest one above it that exists.
bool BelongsToUser(std::string folder) {
  while (!OpenOwnFolder(folder + "/").valid()) {
    ThrowIfOutOfResources(errno, folder.c_str());
    if (errno != ENOENT || folder.empty()) return false;
    folder = Parent(folder);
  }
  return true;
}

// The library widens some paths on their way to a file call. A path that cannot be converted in the
// locale of the process would name another file there.
bool SurvivesWidening(const std::string& path) {
  std::vector<wchar_t> wide(path.size() + 1);
  std::mbstate_t state = {};
  const char* rest = path.c_str();
  return (mbsrtowcs)(wide.data(), &rest, wide.size(), &state) != static_cast<std::size_t>(-1);
}

// The path without trailing separators. None if the library cannot use it.
std::optional<std::string> UsableFolder(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  if ((path + '/').find("/../") != std::string::npos || !SurvivesWidening(path)) {
    return std::nullopt;
  }
  return path;
}

std::optional<std::string> FolderFromEnvironment(const char* name) {
  const char* value = secure_getenv(name);
  if (value == nullptr || *value != '/') return std::nullopt;
  std::optional<std::string> folder = UsableFolder(value);
  if (!folder || !BelongsToUser(*folder)) return std::nullopt;
  naming_variable = name;
  return folder;
}

std::optional<std::string> HomeFromPasswordDatabase() {
  std::vector<char> buffer(1024);
  passwd entry = {};
  passwd* found = nullptr;
  int error = 0;
  do {
    error = getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    if (error == ERANGE) buffer.resize(buffer.size() * 2);
  } while (error == ERANGE || error == EINTR);
  ThrowIfOutOfResources(error, "the password database");
  if (found == nullptr || *entry.pw_dir != '/') return std::nullopt;
  return UsableFolder(entry.pw_dir);
}

}  // namespace

std::optional<std::string> FindCommonRoot(const std::string& root) { return root + "/var/lib"; }

std::optional<std::string> FindUserRoot() {
  naming_variable = nullptr;
  if (auto folder = FolderFromEnvironment("XDG_DATA_HOME")) return folder;
  auto home = FolderFromEnvironment("HOME");
  if (!home) home = HomeFromPasswordDatabase();
  if (!home) return std::nullopt;
  return *home + "/.local/share";
}

Location::Location(const std::string& path) : handle_(-1), name_(path) {
  const char* value = naming_variable != nullptr ? secure_getenv(naming_variable) : nullptr;
  const std::optional<std::string> folder = UsableFolder(value != nullptr ? value : "");
  if (!folder || folder->empty() || !IsBelow(path, *folder)) return;
  handle_ = OpenOwnFolder(*folder);
  name_ = path.substr(folder->size() + 1);
  valid_ = handle_.valid();
}

int Location::folder() const { return handle_.valid() ? handle_.get() : AT_FDCWD; }

bool MakeRoot(const std::string& folder, unsigned mode) {
  if (folder.empty()) return true;  // That is "/".
  struct stat status = {};
  const Location location(folder);
  if (location.valid() && fstatat(location.folder(), location.name(), &status, 0) == 0) {
    return S_ISDIR(status.st_mode);
  }
  if (errno != ENOENT || !MakeRoot(Parent(folder), mode)) return false;
  const Descriptor parent = OpenOwnFolder(Parent(folder) + "/");
  const std::string name = folder.substr(folder.rfind('/') + 1);
  return parent.valid() && (mkdirat(parent.get(), name.c_str(), mode) == 0 || errno == EEXIST);
}

}  // namespace system_info
