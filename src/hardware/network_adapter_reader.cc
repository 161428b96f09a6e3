#include "hardware/windows_os_manager.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include "hardware/hardware_overlay.h"
#include "platform/unique_handle.h"

namespace system_info {
namespace {

// One record of the adapter list as 32-bit Windows lays it out. A fixed number, since the size of
// the record differs between compilers, and the size in the first call must not.
constexpr ULONG kFirstAdapterBufferSize = 648;

constexpr DWORD kDeviceTextSize = 260;

constexpr GUID kNetworkDeviceClass = {
    0x4d36e972, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};
using AdapterBuffer = std::unique_ptr<IP_ADAPTER_INFO, FreeDeleter>;

AdapterBuffer AllocateAdapters(ULONG size) {
  return AdapterBuffer(static_cast<IP_ADAPTER_INFO*>(std::malloc(size)));
}

// The text of a field that may fill its array to the last byte.
template <std::size_t kSize>
std::string FieldText(const char (&field)[kSize]) {
  return {field, std::find(field, field + kSize, '\0')};
}

ULONG ListAdapters(IP_ADAPTER_INFO* adapters, ULONG* size) {
  HardwareOverlay* overlay = PresentHardwareOverlay();
  if (overlay != nullptr && !overlay->HasAdapters()) return ERROR_NO_DATA;
  return GetAdaptersInfo(adapters, size);
}

std::string AddressText(const IP_ADAPTER_INFO& adapter) {
  HardwareOverlay* overlay = PresentHardwareOverlay();
  if (overlay == nullptr) return FormatMacAddress(adapter.Address);
  return overlay->AdapterAddress(FormatMacAddress(adapter.Address));
}

// The buffer for all texts of devices from the registry and SetupAPI. Its last byte stays zero,
// since the registry does not promise a terminator.
using DeviceText = std::array<char, kDeviceTextSize + 1>;

bool ReadInstanceId(HDEVINFO devices, SP_DEVINFO_DATA& device, DeviceText& text) {
  const UniqueRegistryKey driver_key(
      SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ));
  if (!driver_key.valid()) return false;
  DWORD size = kDeviceTextSize;
  if (RegQueryValueExA(driver_key.get(), "NetCfgInstanceId", nullptr, nullptr,
                       reinterpret_cast<BYTE*>(text.data()), &size) != ERROR_SUCCESS) {
    return false;
  }
  text[std::min(size, kDeviceTextSize)] = '\0';
  return text[0] != '\0';
}

// Leaves `text` as it is if the device has neither name.
void ReadDisplayName(HDEVINFO devices, SP_DEVINFO_DATA& device, DeviceText& text) {
  for (const DWORD property : {DWORD{SPDRP_FRIENDLYNAME}, DWORD{SPDRP_DEVICEDESC}}) {
    if (SetupDiGetDeviceRegistryPropertyA(devices, &device, property, nullptr,
                                          reinterpret_cast<BYTE*>(text.data()), kDeviceTextSize,
                                          nullptr) != 0) {
      return;
    }
  }
}

}  // namespace

std::string WindowsOSManager::GetMacAddress() {
  AdapterMap adapters;
  std::string first_adapter_name;
  std::vector<std::string> pci_adapters;
  if (!GetNetworkAdapters(adapters, first_adapter_name)) return {};
  if (!GetPciNetworkAdapters(pci_adapters)) pci_adapters.clear();
  return SelectMacAddress(adapters, first_adapter_name, pci_adapters, *log_);
}

bool WindowsOSManager::GetNetworkAdapters(AdapterMap& adapters, std::string& first_adapter_name) {
  first_adapter_name.clear();
  ULONG size = kFirstAdapterBufferSize;
  AdapterBuffer buffer = AllocateAdapters(size);
  if (buffer == nullptr) {
    log_->Write("Cannot allocate memory #1", LogLevel::Debug);
    return false;
  }
  if (GetAdaptersInfo(buffer.get(), &size) == ERROR_BUFFER_OVERFLOW) {
    buffer = AllocateAdapters(size);
    if (buffer == nullptr) {
      log_->Write("Cannot allocate memory #2", LogLevel::Debug);
      return false;
    }
  }
  const ULONG code = ListAdapters(buffer.get(), &size);
  if (code != ERROR_SUCCESS) {
    log_->Write("GetAdaptersInfo failed with code = " + std::to_string(code), LogLevel::Debug);
    return false;
  }

  std::string list = "Network Adapters List:\n\n";
  for (const IP_ADAPTER_INFO* record = buffer.get(); record != nullptr; record = record->Next) {
    const std::string name = FieldText(record->AdapterName);
    const std::string address = AddressText(*record);
    adapters[name] = address;
    list.append(name).append(": ").append(address).append(": ");
    list.append(FieldText(record->Description)).append("\n");
    if (first_adapter_name.empty()) first_adapter_name = name;
  }
  log_->Write(list, LogLevel::Debug);
  return true;
}

bool WindowsOSManager::GetPciNetworkAdapters(std::vector<std::string>& pci_adapters) {
  const UniqueDeviceSet devices(
      SetupDiGetClassDevsA(&kNetworkDeviceClass, "PCI", nullptr, DIGCF_PRESENT));
  if (!devices.valid()) {
    log_->Write("SetupDiGetClassDevs failed", LogLevel::Debug);
    return false;
  }

  std::string list = "PCI Network Adapters List:\n\n";
  DeviceText text = {};
  SP_DEVINFO_DATA device = {};
  device.cbSize = sizeof(device);
  for (DWORD index = 0; SetupDiEnumDeviceInfo(devices.get(), index, &device) != 0; ++index) {
    if (!ReadInstanceId(devices.get(), device, text)) continue;
    const std::string instance_id = text.data();
    ReadDisplayName(devices.get(), device, text);
    list += std::string(text.data()) + ": " + instance_id + "\n";
    pci_adapters.push_back(instance_id);
  }
  log_->Write(list, LogLevel::Debug);
  return true;
}

}  // namespace system_info
