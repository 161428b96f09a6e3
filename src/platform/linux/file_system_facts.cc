#include "platform/file_system_facts.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "platform/linux/descriptor.h"
#include "platform/linux/linux_kernel.h"
#include "platform/linux/linux_mounts.h"

namespace system_info {
namespace {

std::filesystem::path NearestThere(std::filesystem::path path) {
  std::error_code failure;
  while (path.has_relative_path() && !std::filesystem::exists(path, failure)) {
    path = path.parent_path();
  }
  const auto resolved = std::filesystem::canonical(path, failure);
  return failure ? path : resolved;
}

bool HasOption(std::string_view options, std::string_view wanted) {
  while (!options.empty()) {
    const std::string_view option = options.substr(0, options.find(','));
    if (option == wanted) return true;
    options.remove_prefix(std::min(options.size(), option.size() + 1));
  }
  return false;
}

// Asks for the holder of a lock without taking one.
bool RefusesLocks(const std::filesystem::path& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
  const Descriptor file(open(path.c_str(), kFlags));
  if (!file.valid()) return false;
  struct flock lock = {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  if (fcntl(file.get(), F_OFD_GETLK, &lock) == 0) return false;
  return errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL;
}

void LookAtMount(const std::string& path, FileSystemFacts& facts) {
  const LinuxMounts mounts("", AskKernel().file_system("/"));
  facts.kept_in_memory = mounts.IsVolatile(path);
  const Mount* mount = mounts.Holding(path);
  if (mount == nullptr) return;
  facts.type = mount->type;
  facts.overlay = mount->type == "overlay";
  facts.holds_root = mount->point == "/";
  for (const std::string_view option : {"nolock", "local_lock=all", "local_lock=posix"}) {
    facts.without_locks = facts.without_locks || HasOption(mount->options, option);
  }
}

}  // namespace

FileSystemFacts LookAtFileSystem(const std::filesystem::path& folder,
                                 const std::filesystem::path& file) {
  FileSystemFacts facts;
  const std::filesystem::path there = NearestThere(folder);
  LookAtMount(there.string(), facts);
  facts.without_locks = facts.without_locks || RefusesLocks(file);
  struct statvfs status = {};
  if (statvfs(there.c_str(), &status) != 0) return facts;
  facts.read_only = (status.f_flag & ST_RDONLY) != 0;
  facts.free_bytes =
      std::uint64_t{status.f_frsize} * (geteuid() == 0 ? status.f_bfree : status.f_bavail);
  const bool no_inode = status.f_files > 0 && status.f_ffree == 0;
  if (no_inode) facts.free_bytes = 0;
  return facts;
}

}  // namespace system_info
