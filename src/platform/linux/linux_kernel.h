// Facts that the kernel reports only through system calls, not in files.

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
  // The type as in the manual page of statfs; 0 if unknown.
  std::uint32_t type = 0;
  // The 16 bytes of its UUID, if the kernel has a call for that.
  std::optional<std::array<std::uint8_t, 16>> uuid;
};

// Returns true to get more.
using TakeDump = std::function<bool(std::string_view part)>;

// Each throws if the process or the system is out of resources.
struct KernelAnswers {
  // The facts of the file system that holds `path`.
  std::function<FileSystem(const std::string& path)> file_system;

  // Requests the dump of RTM_GETLINK or RTM_GETADDR, and passes it to `take` in parts of whole
  // messages while `take` returns true. Passes nothing if the kernel does not answer this process.
  std::function<void(std::uint16_t question, const TakeDump& take)> network_dump;

  // The permanent address of an interface, if it has one.
  std::function<std::optional<MacAddress>(const std::string& name)> permanent_address;
};

// The calls of the running kernel.
KernelAnswers AskKernel();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_KERNEL_H_
