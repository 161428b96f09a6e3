// The folders of a Linux system above those of the library.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_

#include <optional>
#include <string>

namespace system_info {

// Both are without a separator at the end, and are made if they are not there. `root` is empty for
// the computer itself.
std::optional<std::string> FindCommonRoot(const std::string& root);
std::optional<std::string> FindUserRoot();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
