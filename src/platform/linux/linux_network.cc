#include "platform/linux/linux_network.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string_view>

#include "platform/linux/network_dump.h"
#include "platform/linux/value_files.h"

namespace system_info {
namespace {

constexpr const char* kInterfaces = "/sys/class/net/";
constexpr unsigned long kFlagUp = 0x1;
constexpr unsigned long kFlagLoopback = 0x8;
constexpr long kAddressDrawnAtRandom = 1;

std::optional<MacAddress> ParseAddress(const std::string& text) {
  std::array<unsigned, 6> parts = {};
  int length = 0;
  // NOLINTNEXTLINE(cert-err34-c): two digits always fit
  const int count = std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", parts.data(), &parts[1],
                                &parts[2], &parts[3], &parts[4], &parts[5], &length);
  if (count != 6 || text.size() != 17 || length != 17) return std::nullopt;
  MacAddress address = {};
  std::transform(parts.begin(), parts.end(), address.begin(),
                 [](unsigned part) { return static_cast<std::uint8_t>(part); });
  return address;
}

// The PCI position of a device or, as with virtio, of its parent device.
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

// An interface as described in its folder in /sys. None if a file is missing.
std::optional<ListedInterface> ReadInterface(const std::string& root, const std::string& name) {
  const std::string folder = root + kInterfaces + name;
  const auto address = ReadValue(folder + "/address");
  const auto flags = ReadNumber(folder + "/flags");
  const auto index = ReadNumber(folder + "/ifindex");
  if (!address || !flags || !index) return std::nullopt;
  ListedInterface found;
  found.name = name;
  found.index = *index;
  found.flags = static_cast<unsigned long>(*flags);
  found.address = ParseAddress(*address);
  return found;
}

// True for an interface whose address can be permanent.
bool IsCandidate(const ListedInterface& listed) {
  return listed.address && (listed.flags & kFlagLoopback) == 0;
}

// The folders in which the kernel reports the origin of addresses.
struct OriginFolders {
  explicit OriginFolders(const std::string& root)
      : without_device(OpenToRead(root + "/sys/devices/virtual/net", O_DIRECTORY)),
        all(OpenToRead(root + kInterfaces, O_DIRECTORY)) {}

  // Interfaces without a device can be many, and reaching them through `all` takes a link for each.
  Descriptor without_device;
  Descriptor all;
};

// True unless the kernel generated the address at random or does not report its origin.
bool AddressInUseStays(const std::string& name, const OriginFolders& folders) {
  const std::string file = name + "/addr_assign_type";
  auto origin = ReadNumber(file, folders.without_device.get());
  if (!origin) origin = ReadNumber(file, folders.all.get());
  return origin && *origin != kAddressDrawnAtRandom;
}

LinuxInterface Describe(const std::string& root, const ListedInterface& listed,
                        const MacAddress& address) {
  LinuxInterface found;
  found.adapter.name = listed.name;
  found.adapter.address = address;
  found.index = listed.index;
  found.up = (listed.flags & kFlagUp) != 0;
  const auto device = ResolvedPath(root + kInterfaces + listed.name + "/device");
  if (!device) return found;
  found.has_device = true;
  found.adapter.description = LinkedName(*device + "/driver").value_or("");
  found.pci_address = FindPciAddress(*device);
  return found;
}

void MarkThoseWithIpAddress(const KernelAnswers& kernel, std::vector<LinuxInterface>& interfaces) {
  const auto indexes = ListIndexesWithIpAddress(kernel).value_or(std::vector<long>());
  for (LinuxInterface& found : interfaces) {
    found.has_ip_address = std::find(indexes.begin(), indexes.end(), found.index) != indexes.end();
  }
}

std::vector<LinuxInterface> LastingInterfacesOf(const std::string& root,
                                                const KernelAnswers& kernel,
                                                const InterfaceList& list) {
  std::vector<LinuxInterface> interfaces;
  const OriginFolders folders(root);
  for (const ListedInterface& listed : list.interfaces) {
    if (!IsCandidate(listed)) continue;
    auto address = list.has_permanent_addresses ? listed.permanent_address
                                                : kernel.permanent_address(listed.name);
    if (!address && AddressInUseStays(listed.name, folders)) address = listed.address;
    if (address) interfaces.push_back(Describe(root, listed, *address));
  }
  if (!interfaces.empty()) MarkThoseWithIpAddress(kernel, interfaces);
  return interfaces;
}

// The interfaces that have a folder and are not among the `known` ones.
InterfaceList ListInterfacesInFolders(const std::string& root, const InterfaceList& known) {
  std::set<std::string_view> names;
  for (const ListedInterface& listed : known.interfaces) names.insert(listed.name);
  InterfaceList list;
  for (const std::string& name : NamesIn(root + kInterfaces)) {
    if (names.contains(name)) continue;
    if (auto listed = ReadInterface(root, name)) list.interfaces.push_back(*std::move(listed));
  }
  return list;
}

}  // namespace

std::vector<LinuxInterface> ListInterfaces(const std::string& root, const KernelAnswers& kernel) {
  InterfaceList list = ListInterfacesOfKernel(kernel).value_or(InterfaceList());
  std::vector<LinuxInterface> interfaces = LastingInterfacesOf(root, kernel, list);
  if (interfaces.empty()) {
    // A sandbox may hide the interfaces of the machine from calls and show them in the folders.
    list = ListInterfacesInFolders(root, list);
    interfaces = LastingInterfacesOf(root, kernel, list);
  }
  std::sort(interfaces.begin(), interfaces.end(),
            [](const auto& left, const auto& right) { return left.index < right.index; });
  return interfaces;
}

}  // namespace system_info
