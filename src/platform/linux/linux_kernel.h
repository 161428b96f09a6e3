// What the kernel tells by system calls only, not in any file.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_KERNEL_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_KERNEL_H_

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace system_info {

using MacAddress = std::array<std::uint8_t, 6>;

struct FileSystem {
  // As in the manual page of statfs. 0 if the kernel does not tell.
  std::uint32_t type = 0;
  // The 16 bytes of its UUID, if the kernel has a call for that.
  std::optional<std::array<std::uint8_t, 16>> uuid;
};

// Returns true if it wants more.
using TakeDump = std::function<bool(std::string_view part)>;

// Each throws if the process or the system is out of resources.
struct KernelAnswers {
  // About the file system that holds `path`.
  std::function<FileSystem(const std::string& path)> file_system;

  // Asks for the dump of RTM_GETLINK or RTM_GETADDR, and hands it to `take` in parts that hold
  // whole messages, as long as `take` wants more. Takes nothing from a kernel that does not answer
  // this process.
  std::function<void(std::uint16_t question, const TakeDump& take)> network_dump;

  // The address that an interface has had since it was made. None if there is no such.
  std::function<std::optional<MacAddress>(const std::string& name)> permanent_address;
};

// Those of the running kernel.
KernelAnswers AskKernel();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_KERNEL_H_
