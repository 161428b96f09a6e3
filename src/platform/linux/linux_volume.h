// The UUID of the file system at "/" of a Linux system, as the links in /dev/disk/by-uuid write it.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_VOLUME_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_VOLUME_H_

#include <optional>
#include <string>

#include "platform/linux/linux_kernel.h"
#include "platform/linux/linux_mounts.h"

namespace system_info {

// None for a file system that has no UUID or is created at each boot. `at_root` has the kernel's
// facts about the file system.
std::optional<std::string> RootVolume(const std::string& root, const LinuxMounts& mounts,
                                      const FileSystem& at_root);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_VOLUME_H_
