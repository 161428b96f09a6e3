// The messages in which the kernel lists network interfaces and their IP addresses.

#ifndef DEVICEID_PLATFORM_LINUX_NETWORK_DUMP_H_
#define DEVICEID_PLATFORM_LINUX_NETWORK_DUMP_H_

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/linux_kernel.h"

namespace system_info {

// An interface as the kernel lists it.
struct ListedInterface {
  std::string name;
  long index = 0;
  unsigned long flags = 0;
  std::optional<MacAddress> address;
  std::optional<MacAddress> permanent_address;
};

struct InterfaceList {
  std::vector<ListedInterface> interfaces;
  // False for kernels that do not report permanent addresses.
  bool has_permanent_addresses = false;
};

// Both query the kernel. None if it does not give this process a complete answer.
std::optional<InterfaceList> ListInterfacesOfKernel(const KernelAnswers& kernel);
std::optional<std::vector<long>> ListIndexesWithIpAddress(const KernelAnswers& kernel);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_NETWORK_DUMP_H_
