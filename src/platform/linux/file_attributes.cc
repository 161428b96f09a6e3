#include "platform/file_attributes.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/linux/descriptor.h"

namespace system_info {
namespace {

FileKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::kRegular;
  if (S_ISDIR(mode)) return FileKind::kFolder;
  return S_ISLNK(mode) ? FileKind::kLink : FileKind::kOther;
}

std::string NameOfUser(uid_t user) {
  const passwd* entry = getpwuid(user);
  return entry != nullptr ? entry->pw_name : std::to_string(user);
}

std::string NameOfGroup(gid_t group) {
  const ::group* entry = getgrgid(group);
  return entry != nullptr ? entry->gr_name : std::to_string(group);
}

// With an access control list, the group bits are its mask.
std::string OtherWriters(const struct stat& status) {
  if ((status.st_mode & S_IWOTH) != 0) return "everybody";
  if ((status.st_mode & S_IWGRP) == 0 || status.st_gid == 0) return "";
  return "group " + NameOfGroup(status.st_gid);
}

}  // namespace

FileAttributes LookAtFile(const std::filesystem::path& path) {
  FileAttributes facts;
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) facts.kind = FileKind::kMissing;
    return facts;
  }
  facts.kind = KindOf(status.st_mode);
  facts.foreign_link =
      facts.kind == FileKind::kLink && status.st_uid != 0 && status.st_uid != geteuid();
  facts.size = static_cast<std::uint64_t>(status.st_size);
  facts.modified = status.st_mtim.tv_sec;
  facts.owner = NameOfUser(status.st_uid);
  if (facts.kind != FileKind::kLink) facts.other_writers = OtherWriters(status);
  return facts;
}

std::optional<std::string> ReadBytes(const std::filesystem::path& path, std::size_t limit) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file.valid() || fstat(file.get(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 16384> buffer;
  while (bytes.size() < limit) {
    const std::size_t wanted = std::min(buffer.size(), limit - bytes.size());
    const ssize_t count =
        RepeatInterrupted([&] { return read(file.get(), buffer.data(), wanted); });
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

}  // namespace system_info
