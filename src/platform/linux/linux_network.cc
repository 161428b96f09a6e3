#include "platform/linux/linux_network.h"

#include <algorithm>
#include <cstdio>

#include "platform/linux/value_files.h"

namespace system_info {
namespace {

constexpr long kFlagUp = 0x1;
constexpr long kFlagLoopback = 0x8;
constexpr long kAddressDrawnAtRandom = 1;

std::optional<std::array<std::uint8_t, 6>> ParseAddress(const std::string& text) {
  std::array<unsigned, 6> parts = {};
  int length = 0;
  // NOLINTNEXTLINE(cert-err34-c): two digits always fit
  const int count = std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", parts.data(), &parts[1],
                                &parts[2], &parts[3], &parts[4], &parts[5], &length);
  if (count != 6 || text.size() != 17 || length != 17) return std::nullopt;
  std::array<std::uint8_t, 6> address = {};
  std::transform(parts.begin(), parts.end(), address.begin(),
                 [](unsigned part) { return static_cast<std::uint8_t>(part); });
  return address;
}

// The place on the PCI bus of a device or, as with virtio, of the device that it is a part of.
std::optional<PciAddress> FindPciAddress(const std::string& device) {
  for (const std::string& folder : {device, device.substr(0, device.rfind('/'))}) {
    if (LinkedName(folder + "/subsystem") != "pci") continue;
    PciAddress address;
    auto& [domain, bus, slot, function] = address;
    const std::string name = LastName(folder);
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes these names
    if (std::sscanf(name.c_str(), "%x:%x:%x.%x", &domain, &bus, &slot, &function) == 4) {
      return address;
    }
  }
  return std::nullopt;
}

std::optional<LinuxInterface> ReadInterface(const std::string& parent, const std::string& name) {
  const std::string folder = parent + "/" + name;
  const auto address_text = ReadValue(folder + "/address");
  const auto address = address_text ? ParseAddress(*address_text) : std::nullopt;
  const auto origin = ReadNumber(folder + "/addr_assign_type");
  const auto flags = ReadNumber(folder + "/flags");
  const auto index = ReadNumber(folder + "/ifindex");
  if (!address || !origin || !flags || !index) return std::nullopt;
  if (*origin == kAddressDrawnAtRandom || (*flags & kFlagLoopback) != 0) return std::nullopt;

  LinuxInterface found;
  found.adapter.name = name;
  found.adapter.address = *address;
  found.index = *index;
  found.up = (*flags & kFlagUp) != 0;

  const auto device = ResolvedPath(folder + "/device");
  if (!device) return found;
  found.has_device = true;
  found.adapter.description = LinkedName(*device + "/driver").value_or("");
  found.pci_address = FindPciAddress(*device);
  return found;
}

}  // namespace

std::vector<LinuxInterface> ListInterfaces(const std::string& root) {
  std::vector<LinuxInterface> interfaces;
  const std::string folder = root + "/sys/class/net";
  for (const std::string& name : NamesIn(folder)) {
    if (auto found = ReadInterface(folder, name)) interfaces.push_back(*std::move(found));
  }
  std::sort(interfaces.begin(), interfaces.end(),
            [](const auto& left, const auto& right) { return left.index < right.index; });
  return interfaces;
}

}  // namespace system_info
