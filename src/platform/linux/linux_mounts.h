// The mounted file systems of a Linux system.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_

#include <optional>
#include <string>
#include <vector>

namespace system_info {

struct Mount {
  std::string device;  // "major:minor"
  std::string point;
  std::string type;
  std::string source;
  std::string options;  // Of the file system, separated by commas.
};

// A snapshot of the mounts that the process below `root` sees.
class LinuxMounts {
 public:
  explicit LinuxMounts(const std::string& root);

  // The mount that holds `path`, or null if nothing is known of it.
  const Mount* Holding(const std::string& path) const;

  // True if what stands at `path` is lost with the next boot.
  bool IsVolatile(const std::string& path) const;

 private:
  std::string root_;
  std::vector<Mount> mounts_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_MOUNTS_H_
