// The network interfaces of a Linux system that can identify the machine.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_

#include <compare>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/linux/linux_kernel.h"
#include "platform/linux/machine.h"

namespace system_info {

// Domain, bus, device and function.
using PciAddress = std::tuple<unsigned, unsigned, unsigned, unsigned>;

struct LinuxInterface {
  NetworkAdapter adapter;  // The description is the name of the driver, if there is one.
  long index = 0;
  bool up = false;
  bool has_ip_address = false;
  bool has_device = false;
  std::optional<PciAddress> pci_address;
};

// All interfaces with a permanent six-byte address, sorted by index, without loopback.
//
// The address is the permanent one, whatever address is in use, if the interface has one. Otherwise
// it is the address in use, unless the kernel generated it at random. Devices and origins of
// addresses are read below `root`, and so are the interfaces if the kernel does not list them for
// this process.
std::vector<LinuxInterface> ListInterfaces(const std::string& root, const KernelAnswers& kernel);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_NETWORK_H_
