#include "platform/linux/linux_machine.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "platform/linux/linux_folders.h"
#include "platform/linux/linux_mounts.h"
#include "platform/linux/linux_network.h"
#include "platform/linux/linux_volume.h"
#include "platform/linux/value_files.h"

namespace system_info {
namespace {

constexpr const char* kDmi = "/sys/class/dmi/id";

// Converts byte by byte, so that a value does not depend on the locale of the process.
WmiValue ToValue(const std::optional<std::string>& text) {
  if (!text) return {};
  std::wstring wide;
  for (const char byte : *text) wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return wide;
}

std::optional<std::string> SystemUuid(const std::string& root) {
  if (Exists(root + kDmi)) return OnlyRealUuid(ReadValue(root + kDmi + "/product_uuid"));
  // Texts of the device tree are zero-terminated.
  auto serial = ReadValue(root + "/sys/firmware/devicetree/base/serial-number");
  if (serial) serial->erase(std::min(serial->size(), serial->find('\0')));
  return OnlyRealUuid(serial);
}

// The path after following all symbolic links, relative to `root`.
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

std::string FormatAddress(const MacAddress& address) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : address) {
    if (!text.empty()) text += ':';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

class LinuxHardware final : public Hardware {
 public:
  LinuxHardware(const std::string& root, const KernelAnswers& kernel)
      : interfaces_(ListInterfaces(root, kernel)) {
    const FileSystem at_root = kernel.file_system(root + "/");
    const LinuxMounts mounts(root, at_root);
    const std::wstring product = L"Win32_ComputerSystemProduct";
    Set(product, L"UUID", SystemUuid(root));
    Set(product, L"IdentifyingNumber", ReadValue(root + kDmi + "/product_serial"));
    Set(L"Win32_BaseBoard", L"SerialNumber", ReadValue(root + kDmi + "/board_serial"));
    Set(L"Win32_OperatingSystem", L"SerialNumber", SystemSerial(root, mounts));
    Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber",
        RootVolume(root, mounts, at_root));
    SetFirstAddress(L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE",
                    [](const auto& found) { return found.up && found.has_ip_address; });
    SetFirstAddress(
        L"Win32_NetworkAdapter WHERE Manufacturer != 'Microsoft' AND NOT PNPDeviceID LIKE "
        L"'ROOT%\\\\'",
        [](const auto& found) { return found.has_device; });
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

  // Sorted by position on the bus.
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
  // Sets a property of the one row of a class.
  void Set(const std::wstring& class_text, const wchar_t* property,
           const std::optional<std::string>& value) {
    std::vector<WmiRow>& rows = rows_[class_text];
    if (rows.empty()) rows.emplace_back();
    rows[0].emplace(property, ToValue(value));
  }

  // A class of adapters has one row, if any adapter `suits`.
  template <typename Suits>
  void SetFirstAddress(const std::wstring& class_text, Suits suits) {
    const auto found = std::find_if(interfaces_.begin(), interfaces_.end(), suits);
    if (found == interfaces_.end()) return;
    Set(class_text, L"MACAddress", FormatAddress(found->adapter.address));
  }

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
