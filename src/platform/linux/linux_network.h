// The network interfaces of a Linux system that can stand for the machine.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_

#include <compare>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/linux/machine.h"

namespace system_info {

// Domain, bus, device and function.
using PciAddress = std::tuple<unsigned, unsigned, unsigned, unsigned>;

struct LinuxInterface {
  NetworkAdapter adapter;  // The description is the name of the driver, if there is one.
  long index = 0;
  bool up = false;
  bool has_device = false;
  std::optional<PciAddress> pci_address;
};

// All interfaces below `root` with a six-byte address that the kernel did not draw at random,
// loopback left out, by index.
std::vector<LinuxInterface> ListInterfaces(const std::string& root);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_
