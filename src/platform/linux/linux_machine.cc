#include "platform/linux/linux_machine.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "platform/linux/linux_folders.h"
#include "platform/linux/linux_mounts.h"
#include "platform/linux/linux_network.h"
#include "platform/linux/value_files.h"

namespace system_info {
namespace {

constexpr const char* kDmi = "/sys/class/dmi/id";
constexpr std::string_view kDigits = "0123456789abcdef";

// Byte by byte, so that a value is the same whatever the locale of the process is.
WmiValue ToValue(const std::optional<std::string>& text) {
  if (!text) return {};
  std::wstring wide;
  for (const char byte : *text) wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return wide;
}

std::optional<std::string> OnlyRealUuid(std::optional<std::string> text) {
  if (text && !IsRealUuid(*text)) return std::nullopt;
  return text;
}

std::optional<std::string> SystemUuid(const std::string& root) {
  if (Exists(root + kDmi)) {
    return OnlyRealUuid(ReadValue(root + kDmi + "/product_uuid"));
  }
  // Texts of the device tree end in a zero byte, which is not a part of them.
  auto serial = ReadValue(root + "/sys/firmware/devicetree/base/serial-number");
  if (serial) serial->erase(std::min(serial->size(), serial->find('\0')));
  if (serial && serial->empty()) return std::nullopt;
  return OnlyRealUuid(serial);
}

// Where a path ends up behind its symbolic links, seen from `root`.
std::string Resolve(const std::string& root, const std::string& path) {
  const std::string folder = root.empty() ? "" : ResolvedPath(root).value_or("");
  const std::string resolved = ResolvedPath(root + path).value_or("");
  return resolved.starts_with(folder + "/") ? resolved.substr(folder.size()) : path;
}

std::optional<std::string> SystemSerial(const std::string& root, const LinuxMounts& mounts) {
  for (const std::string path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    // One of them is often a link to the other.
    if (mounts.IsVolatile(Resolve(root, path))) continue;
    auto id = OnlyRealUuid(ReadValue(root + path));
    if (id && *id != "uninitialized") return id;
  }
  return std::nullopt;
}

std::string FormatUuid(const std::array<std::uint8_t, 16>& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

std::string FormatAddress(const std::array<std::uint8_t, 6>& address) {
  std::string text;
  for (const std::uint8_t byte : address) {
    if (!text.empty()) text += ':';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// The name of the block device in "/dev" that a mount is made from.
std::string DeviceName(const std::string& root, const Mount& mount) {
  const auto name = LinkedName(root + "/sys/dev/block/" + mount.device);
  if (name) return *name;
  // File systems that span devices have a number of their own.
  if (!mount.source.starts_with('/')) return {};
  return LinkedName(root + mount.source).value_or(LastName(mount.source));
}

std::optional<std::string> UuidByDevice(const std::string& root, const std::string& device) {
  const std::string folder = root + "/dev/disk/by-uuid";
  for (const std::string& uuid : NamesIn(folder)) {
    if (LinkedName(folder + "/" + uuid) == device) return uuid;
  }
  return std::nullopt;
}

std::optional<std::string> VolumeUuid(const std::string& root, const LinuxMounts& mounts,
                                      const KernelAnswers& kernel) {
  // An overlay has no file system of its own; the kernel draws it a UUID as it is mounted.
  const Mount* mount = mounts.Holding("/");
  if (mounts.IsVolatile("/") || (mount != nullptr && mount->type == "overlay")) return std::nullopt;
  if (const auto uuid = kernel.file_system_uuid(root + "/")) return OnlyRealUuid(FormatUuid(*uuid));
  if (mount == nullptr) return std::nullopt;
  return OnlyRealUuid(UuidByDevice(root, DeviceName(root, *mount)));
}

// One row with the address of the first of `interfaces` that `suits`, or no row.
template <typename Suits>
std::vector<WmiRow> FirstAddress(const std::vector<LinuxInterface>& interfaces, Suits suits) {
  const auto found = std::find_if(interfaces.begin(), interfaces.end(), suits);
  if (found == interfaces.end()) return {};
  return {{{L"MACAddress", ToValue(FormatAddress(found->adapter.address))}}};
}

class LinuxHardware final : public Hardware {
 public:
  LinuxHardware(const std::string& root, const KernelAnswers& kernel)
      : interfaces_(ListInterfaces(root)) {
    const LinuxMounts mounts(root);
    const std::set<std::string> with_address = kernel.interfaces_with_address();
    rows_ = {
        {L"Win32_ComputerSystemProduct",
         {{{L"UUID", ToValue(SystemUuid(root))},
           {L"IdentifyingNumber", ToValue(ReadValue(root + kDmi + "/product_serial"))}}}},
        {L"Win32_BaseBoard",
         {{{L"SerialNumber", ToValue(ReadValue(root + kDmi + "/board_serial"))}}}},
        {L"Win32_OperatingSystem", {{{L"SerialNumber", ToValue(SystemSerial(root, mounts))}}}},
        {L"win32_logicaldisk WHERE deviceid=\"C:\"",
         {{{L"VolumeSerialNumber", ToValue(VolumeUuid(root, mounts, kernel))}}}},
        {L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE",
         FirstAddress(interfaces_,
                      [&](const auto& candidate) {
                        return candidate.up && with_address.contains(candidate.adapter.name);
                      })},
        {L"Win32_NetworkAdapter WHERE Manufacturer != 'Microsoft' AND NOT PNPDeviceID LIKE "
         L"'ROOT%\\\\'",
         FirstAddress(interfaces_, [](const auto& candidate) { return candidate.has_device; })}};
  }

  std::vector<WmiRow> QueryWmi(const std::wstring& class_text) override {
    const auto rows = rows_.find(class_text);
    return rows == rows_.end() ? std::vector<WmiRow>() : rows->second;
  }

  std::vector<NetworkAdapter> NetworkAdapters() override {
    std::vector<NetworkAdapter> adapters;
    for (const LinuxInterface& found : interfaces_) adapters.push_back(found.adapter);
    return adapters;
  }

  // By their places on the bus.
  std::vector<PciNetworkDevice> PciNetworkDevices() override {
    std::multimap<PciAddress, PciNetworkDevice> devices;
    for (const LinuxInterface& found : interfaces_) {
      if (!found.pci_address) continue;
      PciNetworkDevice device;
      device.instance_id = found.adapter.name;
      if (!found.adapter.description.empty()) device.description = found.adapter.description;
      devices.emplace(*found.pci_address, device);
    }
    std::vector<PciNetworkDevice> sorted;
    for (const auto& [address, device] : devices) sorted.push_back(device);
    return sorted;
  }

 private:
  std::vector<LinuxInterface> interfaces_;
  std::map<std::wstring, std::vector<WmiRow>> rows_;
};

}  // namespace

LinuxMachine::LinuxMachine(const std::string& root, KernelAnswers kernel)
    : root_(root == "/" ? "" : root), kernel_(std::move(kernel)) {}

std::unique_ptr<Hardware> LinuxMachine::LookAtHardware() {
  return std::make_unique<LinuxHardware>(root_, kernel_);
}

std::wstring LinuxMachine::WindowsFolder() { return L"C:\\Windows"; }

std::optional<std::string> LinuxMachine::CommonRoot() { return FindCommonRoot(root_); }

std::optional<std::string> LinuxMachine::UserRoot() { return FindUserRoot(); }

std::int64_t LinuxMachine::PresentTicks() {
  std::timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return std::int64_t{now.tv_sec} * 10'000'000 + now.tv_nsec / 100;
}

}  // namespace system_info
