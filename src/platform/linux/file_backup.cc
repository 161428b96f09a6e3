#include "platform/file_backup.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/linux/descriptor.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;

constexpr int kOpen = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;

// The mode of the library's own files: never writable for everybody.
constexpr mode_t kNewFile = 0664;

// Drops set-user-ID and set-group-ID bits: no state file needs them, whatever a manifest says.
constexpr unsigned kFileModes = 01777;
constexpr unsigned kFolderModes = 03777;

constexpr std::string_view kAttribute = "xattr:";

// Hosts open a file for much shorter.
constexpr int kAttempts = 100;
constexpr std::chrono::milliseconds kPause(20);

[[noreturn]] void Fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

int Checked(int result, const fs::path& path) {
  if (result < 0) Fail(path);
  return result;
}

struct stat StatusOf(const fs::path& path) {
  struct stat status = {};
  Checked(lstat(path.c_str(), &status), path);
  return status;
}

// Without changing the access time if the system allows that.
Descriptor OpenToRead(const fs::path& path) {
  Descriptor file(open(path.c_str(), O_RDONLY | O_NOATIME | kOpen));
  if (!file.valid() && errno == EPERM) file = Descriptor(open(path.c_str(), O_RDONLY | kOpen));
  return file;
}

std::string TextOf(const timespec& time) {
  return std::to_string(time.tv_sec) + " " + std::to_string(time.tv_nsec);
}

std::string OctalOf(unsigned mode) {
  std::array<char, 16> text = {};
  char* const end = std::to_chars(text.data(), text.data() + text.size(), mode, 8).ptr;
  return {text.data(), end};
}

template <typename Integer>
Integer ParseNumber(std::string_view text, int base = 10) {
  Integer number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::runtime_error("\"" + std::string(text) + "\" is no number");
  }
  return number;
}

timespec ParseTime(std::string_view text) {
  const std::size_t blank = text.find(' ');
  if (blank == std::string_view::npos) return {ParseNumber<time_t>(text), 0};
  return {ParseNumber<time_t>(text.substr(0, blank)), ParseNumber<long>(text.substr(blank + 1))};
}

std::string HexOf(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string BytesOfHex(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes += static_cast<char>(ParseNumber<unsigned char>(text.substr(i, 2), 16));
  }
  return bytes;
}

// None if the file system has no attributes.
FileProperties AttributesOf(int file) {
  FileProperties found;
  std::vector<char> names(1U << 16);
  const ssize_t size = flistxattr(file, names.data(), names.size());
  const std::string_view list(names.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
  for (std::size_t start = 0; start < list.size();) {
    const std::string name(list.data() + start);
    std::vector<char> value(1U << 16);
    const ssize_t length = fgetxattr(file, name.c_str(), value.data(), value.size());
    if (length >= 0) {
      found[std::string(kAttribute) + name] =
          HexOf({value.data(), static_cast<std::size_t>(length)});
    }
    start += name.size() + 1;
  }
  return found;
}

void ApplyAttributes(int file, const fs::path& path, const FileProperties& wanted) {
  const FileProperties present = AttributesOf(file);
  for (const auto& [name, value] : present) {
    if (wanted.contains(name)) continue;
    Checked(fremovexattr(file, name.c_str() + kAttribute.size()), path);
  }
  for (const auto& [name, value] : wanted) {
    if (!name.starts_with(kAttribute)) continue;
    const auto known = present.find(name);
    if (known != present.end() && known->second == value) continue;
    const std::string bytes = BytesOfHex(value);
    Checked(fsetxattr(file, name.c_str() + kAttribute.size(), bytes.data(), bytes.size(), 0), path);
  }
}

// The owner first: changing the owner can remove rights.
void ApplyRights(int file, const fs::path& path, const FileProperties& properties) {
  struct stat status = {};
  Checked(fstat(file, &status), path);
  const auto owner = ParseNumber<uid_t>(properties.at("owner"));
  const auto group = ParseNumber<gid_t>(properties.at("group"));
  if (status.st_uid != owner || status.st_gid != group) Checked(fchown(file, owner, group), path);
  ApplyAttributes(file, path, properties);
  const unsigned modes = S_ISDIR(status.st_mode) ? kFolderModes : kFileModes;
  const unsigned mode = ParseNumber<unsigned>(properties.at("mode"), 8) & modes;
  Checked(fstat(file, &status), path);
  if ((status.st_mode & 07777) != mode) Checked(fchmod(file, mode), path);
}

bool HasTimes(const struct stat& status, const FileProperties& properties) {
  return TextOf(status.st_mtim) == properties.at("modified") &&
         TextOf(status.st_atim) == properties.at("accessed");
}

void ApplyToLink(const fs::path& path, const struct stat& status,
                 const FileProperties& properties) {
  const auto owner = ParseNumber<uid_t>(properties.at("owner"));
  const auto group = ParseNumber<gid_t>(properties.at("group"));
  if (status.st_uid != owner || status.st_gid != group) {
    Checked(lchown(path.c_str(), owner, group), path);
  }
  const timespec times[] = {ParseTime(properties.at("accessed")),
                            ParseTime(properties.at("modified"))};
  if (HasTimes(status, properties)) return;
  Checked(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), path);
}

bool IsMemberOf(gid_t group) {
  if (group == getegid()) return true;
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
  const int count = getgroups(static_cast<int>(groups.size()), groups.data());
  for (int i = 0; i < count; ++i) {
    if (groups[static_cast<std::size_t>(i)] == group) return true;
  }
  return false;
}

// Other users of the library hold such a lock while they read or write.
bool LockForWriting(int file) {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (fcntl(file, F_OFD_SETLK, &lock) == 0) return true;
    if (errno != EAGAIN && errno != EACCES) return true;  // A file system without locks.
    std::this_thread::sleep_for(kPause);
  }
  errno = EBUSY;
  return false;
}

void WriteAll(int file, const std::string& bytes, const fs::path& path) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    done += static_cast<std::size_t>(Checked(
        static_cast<int>(RepeatInterrupted([&] {
          return pwrite(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        })),
        path));
  }
}

fs::path HomeFolder() {
  const char* home = secure_getenv("HOME");
  if (home != nullptr && *home == '/') return home;
  const passwd* entry = getpwuid(geteuid());
  return entry != nullptr && *entry->pw_dir == '/' ? entry->pw_dir : "";
}

}  // namespace

FileProperties ReadProperties(const fs::path& path) {
  const struct stat status = StatusOf(path);
  FileProperties properties;
  if (!S_ISLNK(status.st_mode)) {
    const Descriptor file = OpenToRead(path);
    Checked(file.get(), path);
    properties = AttributesOf(file.get());
    properties["mode"] = OctalOf(status.st_mode & 07777);
  }
  properties["owner"] = std::to_string(status.st_uid);
  properties["group"] = std::to_string(status.st_gid);
  properties["modified"] = TextOf(status.st_mtim);
  properties["accessed"] = TextOf(status.st_atim);
  return properties;
}

void ApplyProperties(const fs::path& path, const FileProperties& properties) {
  const struct stat status = StatusOf(path);
  if (S_ISLNK(status.st_mode)) return ApplyToLink(path, status, properties);
  const Descriptor file = OpenToRead(path);
  Checked(file.get(), path);
  ApplyRights(file.get(), path, properties);
  const timespec times[] = {ParseTime(properties.at("accessed")),
                            ParseTime(properties.at("modified"))};
  struct stat now = {};
  Checked(fstat(file.get(), &now), path);
  if (!HasTimes(now, properties)) Checked(futimens(file.get(), times), path);
  Checked(fsync(file.get()), path);
}

bool MayMakeAgain(const fs::path& path) {
  if (geteuid() == 0) return true;
  const struct stat status = StatusOf(path);
  return status.st_uid == geteuid() && IsMemberOf(status.st_gid);
}

void WriteDurably(const fs::path& path, const std::string& bytes) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | kOpen, kNewFile));
  Checked(file.get(), path);
  struct stat status = {};
  Checked(fstat(file.get(), &status), path);
  // A second hard link could be a file somewhere else.
  if (!S_ISREG(status.st_mode) || status.st_nlink > 1) errno = EMLINK;
  if (!S_ISREG(status.st_mode) || status.st_nlink > 1 || !LockForWriting(file.get())) Fail(path);
  WriteAll(file.get(), bytes, path);
  Checked(ftruncate(file.get(), static_cast<off_t>(bytes.size())), path);
  Checked(fsync(file.get()), path);
}

void SyncFolder(const fs::path& folder) {
  const Descriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  Checked(handle.get(), folder);
  // Some file systems do not support this.
  if (fsync(handle.get()) != 0 && errno != EINVAL) Fail(folder);
}

void MakePrivateFolder(const fs::path& path) { Checked(mkdir(path.c_str(), 0700), path); }

fs::path BackupsFolder() {
  if (geteuid() == 0) return "/var/backups/deviceid";
  const char* state = secure_getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return fs::path(state) / "deviceid" / "backups";
  const fs::path home = HomeFolder();
  return home.empty() ? home : home / ".local" / "state" / "deviceid" / "backups";
}

MachineLock::MachineLock(const fs::path& folder)
    : handle_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const int file = static_cast<int>(handle_);
  // Without locks in the file system, a repair goes on.
  held_ = flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

MachineLock::~MachineLock() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

}  // namespace system_info
