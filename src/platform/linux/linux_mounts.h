// The mounted file systems of a Linux system.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/linux_kernel.h"

namespace system_info {

// All texts point into the list of mounts.
struct Mount {
  std::string_view device;  // "major:minor"
  std::string_view point;
  std::string_view type;
  std::string_view source;
  std::string_view options;  // Of the file system, separated by commas.
};

// A snapshot of the mounts that the process below `root` sees. A path outside of all of them, as in
// a chroot, is on the file system at the root.
class LinuxMounts {
 public:
  LinuxMounts(const std::string& root, const FileSystem& at_root);
  LinuxMounts(const LinuxMounts&) = delete;
  LinuxMounts& operator=(const LinuxMounts&) = delete;

  // The mount that holds `path`, or null if it is unknown.
  const Mount* Holding(const std::string& path) const;

  // True if files at `path` are lost at the next boot.
  bool IsVolatile(const std::string& path) const;

 private:
  std::string root_;
  bool root_is_in_memory_;
  std::string list_;
  std::vector<Mount> mounts_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_
