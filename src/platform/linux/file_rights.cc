#include "platform/file_rights.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string_view>

#include "platform/linux/layer_state.h"
#include "platform/linux/linux_folders.h"
#include "platform/linux/machine.h"
#include "platform/linux/out_of_resources.h"
#include "platform/linux/runtime_api.h"

namespace system_info {
namespace {

// Larger than any file of the library, so that one open reads a whole file.
constexpr std::size_t kStart = 1U << 16;

constexpr mode_t kUsualMask = 022;

// The attributes of a path itself; a link is not followed.
using Status = struct statx;

bool ReadStatus(int folder, const char* name, Status& status) {
  return statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) == 0;
}

bool HasCapability(unsigned capability) {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets = {};
  if (syscall(SYS_capget, &header, sets.data()) != 0) return geteuid() == 0;
  return (sets.at(CAP_TO_INDEX(capability)).effective & CAP_TO_MASK(capability)) != 0;
}

// Uses the ids and capabilities that count for an open. Also false on a read-only file system and
// for an immutable file.
bool Permits(int folder, const char* name, int mode) {
  return faccessat(folder, name, mode, AT_EACCESS) == 0;
}

std::string FolderOf(const std::string& name) {
  const std::size_t separator = name.rfind('/');
  if (separator == std::string::npos) return ".";
  return name.substr(0, separator == 0 ? 1 : separator);
}

// In a sticky folder only the owner of the file or of the folder may remove a name.
bool IsStuck(const Status& folder, const Status& file) {
  const uid_t user = geteuid();
  return (folder.stx_mode & S_ISVTX) != 0 && file.stx_uid != user && folder.stx_uid != user &&
         !HasCapability(CAP_FOWNER);
}

bool IsAppendOnly(const Status& status) { return (status.stx_attributes & STATX_ATTR_APPEND) != 0; }

bool IsFixed(const Status& status) {
  return (status.stx_attributes & (STATX_ATTR_APPEND | STATX_ATTR_IMMUTABLE)) != 0;
}

Standing StandingOf(const Status& status) {
  if (S_ISREG(status.stx_mode)) return Standing::kFile;
  if (S_ISDIR(status.stx_mode)) return Standing::kFolder;
  return S_ISLNK(status.stx_mode) ? Standing::kLink : Standing::kOther;
}

// Without changing the access time; the system allows that to the owner of the file.
Descriptor OpenToLook(const Location& location) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
  const auto open_with = [&](int flags) {
    return Descriptor(
        RepeatInterrupted([&] { return openat(location.folder(), location.name(), flags); }));
  };
  Descriptor file = open_with(kFlags | O_NOATIME);
  return file.valid() || errno != EPERM ? std::move(file) : open_with(kFlags);
}

// False if the system fails to read.
bool ReadInto(std::string& bytes, int file, std::uint64_t offset, std::size_t size) {
  bytes.resize(size);
  std::size_t count = 0;
  while (count < size) {
    const ssize_t part = RepeatInterrupted([&] {
      return pread(file, bytes.data() + count, size - count, static_cast<off_t>(offset + count));
    });
    if (part < 0) return false;
    if (part == 0) break;
    count += static_cast<std::size_t>(part);
  }
  bytes.resize(count);
  return true;
}

Holder HolderOf(int file) {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (fcntl(file, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return Holder::kNobody;
  return lock.l_type == F_RDLCK ? Holder::kReader : Holder::kWriter;
}

void LookUpFile(const Location& location, const Status& status, FileRights& rights) {
  rights.may_write = Permits(location.folder(), location.name(), W_OK) && !IsAppendOnly(status);
  rights.may_empty = rights.may_write;
  const Descriptor file = OpenToLook(location);
  if (!file.valid()) {
    ThrowIfOutOfResources(errno, location.name());
    return;
  }
  rights.may_read = true;
  // Deleting a file opens it first.
  rights.may_delete = true;
  rights.holder = HolderOf(file.get());
  rights.read_failed = !ReadInto(rights.start, file.get(), 0, kStart);
  if (rights.read_failed) rights.start.clear();
  rights.longer = rights.start.size() == kStart;
}

// In a world-writable sticky folder, the kernel makes no file through the link of a third account.
bool IsForeignLink(const Status& folder, const Status& link) {
  return (folder.stx_mode & S_ISVTX) != 0 && (folder.stx_mode & S_IWOTH) != 0 &&
         link.stx_uid != geteuid() && link.stx_uid != folder.stx_uid;
}

// Follows links by the rules for state files.
void LookUpLink(const std::string& path, const Location& location, const Status& status,
                FileRights& rights) {
  std::array<char, PATH_MAX> target = {};
  const ssize_t length =
      readlinkat(location.folder(), location.name(), target.data(), target.size());
  if (length < 0) return;
  const std::string text(target.data(), static_cast<std::size_t>(length));
  rights.target = text.starts_with('/') ? text : path.substr(0, path.rfind('/') + 1) + text;
  rights.trusted = status.stx_uid == 0 || status.stx_uid == geteuid();
  struct stat behind = {};
  rights.followed = fstatat(location.folder(), location.name(), &behind, 0) == 0 || errno == ENOENT;
}

// The umask of the process. Without this file it can only be read by changing it.
mode_t PresentMask() {
  const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(
      std::fopen("/proc/self/status", "re"), &std::fclose);
  if (file == nullptr) return kUsualMask;
  constexpr std::string_view kName = "Umask:";
  std::array<char, 256> line = {};
  while (std::fgets(line.data(), line.size(), file.get()) != nullptr) {
    if (!std::string_view(line.data()).starts_with(kName)) continue;
    return static_cast<mode_t>(std::strtoul(line.data() + kName.size(), nullptr, 8));
  }
  return kUsualMask;
}

}  // namespace

std::string SystemPath(const std::string& narrow) { return narrow; }

std::string SystemPath(const std::wstring& wide) {
  std::array<char, PATH_MAX + MB_LEN_MAX> buffer = {};
  std::mbstate_t state = {};
  const wchar_t* rest = wide.c_str();
  const std::size_t length = (wcsrtombs)(buffer.data(), &rest, PATH_MAX, &state);
  return length < PATH_MAX ? std::string(buffer.data(), length) : std::string();
}

std::optional<std::string> FolderIdentity(const std::string& path) {
  const Location location(path);
  struct stat status = {};
  if (!location.valid() || fstatat(location.folder(), location.name(), &status, 0) != 0) {
    ThrowIfOutOfResources(errno, path.c_str());
    return std::nullopt;
  }
  if (!S_ISDIR(status.st_mode)) return std::nullopt;
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

FileRights LookUpRights(const std::string& path) {
  FileRights rights;
  const Location location(path);
  const std::string folder_name = FolderOf(location.name());
  Status folder = {};
  if (!location.valid() || !ReadStatus(location.folder(), (folder_name + "/").c_str(), folder)) {
    ThrowIfOutOfResources(errno, path.c_str());
    return rights;
  }
  rights.may_make_file = Permits(location.folder(), folder_name.c_str(), W_OK | X_OK);
  rights.may_make_folder = rights.may_make_file;
  rights.may_remove_name = rights.may_make_file && !IsAppendOnly(folder);
  Status status = {};
  if (!ReadStatus(location.folder(), location.name(), status)) {
    ThrowIfOutOfResources(errno, path.c_str());
    if (errno == ENOENT) rights.standing = Standing::kNothing;
    return rights;
  }
  rights.standing = StandingOf(status);
  if (IsFixed(status) || IsStuck(folder, status)) rights.may_remove_name = false;
  if (rights.standing == Standing::kFile) LookUpFile(location, status, rights);
  if (rights.standing == Standing::kLink) {
    LookUpLink(path, location, status, rights);
    rights.may_make_behind = !IsForeignLink(folder, status);
  }
  return rights;
}

std::optional<std::string> ReadPart(const std::string& path, std::uint64_t offset,
                                    std::size_t size) {
  const Location location(path);
  if (!location.valid()) return std::nullopt;
  const Descriptor file = OpenToLook(location);
  std::string bytes;
  if (!file.valid() || !ReadInto(bytes, file.get(), offset, size)) return std::nullopt;
  return bytes;
}

OwnRights RightsOfNew() {
  if (HasCapability(CAP_DAC_OVERRIDE)) return {};
  const mode_t mask = PresentMask();
  return {(mask & S_IRUSR) == 0, (mask & S_IWUSR) == 0, (mask & S_IXUSR) == 0};
}

bool IsMadeWhenMissing(const std::string& folder) {
  Machine& machine = PresentMachine();
  return folder == machine.CommonRoot() || folder == machine.UserRoot();
}

bool IsOwnFolder(const std::string& folder) {
  struct stat status = {};
  return stat((folder + "/").c_str(), &status) == 0 && status.st_uid == geteuid();
}

std::optional<std::uint32_t> ScriptedAnswer(FileCall call, const std::string& path) {
  constexpr std::array kCalls = {PlatformCall::kCreateFile,     PlatformCall::kReadFile,
                                 PlatformCall::kWriteFile,      PlatformCall::kWriteFileShort,
                                 PlatformCall::kWriteStream,    PlatformCall::kDeleteFile,
                                 PlatformCall::kCreateDirectory};
  return ScriptedFailure(kCalls.at(static_cast<std::size_t>(call)), path);
}

}  // namespace system_info
