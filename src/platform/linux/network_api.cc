#include "platform/linux/network_api.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/linux/layer_state.h"

using system_info::Counted;
using system_info::HardwareOfThread;
using system_info::Live;
using system_info::NetworkAdapter;
using system_info::PciNetworkDevice;
using system_info::PlatformCall;
using system_info::ScriptedFailure;
using system_info::UnlessOutOfMemory;

struct DeviceSet {
  std::vector<PciNetworkDevice> devices;
  Counted counted{Live().handles};
};

namespace {

constexpr GUID kNetworkClass = {
    0x4d36e972, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

// Size of the buffer for device names.
constexpr DWORD kDeviceTextSize = 260;

// The size that this thread's last call required.
thread_local ULONG size_asked_for = 0;

struct RegistryKey {
  std::optional<std::string> instance_id;
  Counted counted{Live().handles};
};

// A text that fills the field to its last byte has no terminator there.
template <std::size_t kSize>
void SetField(char (&field)[kSize], const std::string& text) {
  text.copy(field, kSize);
}

IP_ADAPTER_INFO MakeRecord(const NetworkAdapter& adapter, IP_ADAPTER_INFO* next) {
  IP_ADAPTER_INFO record = {};
  record.Next = next;
  SetField(record.AdapterName, adapter.name);
  SetField(record.Description, adapter.description);
  record.AddressLength = static_cast<UINT>(adapter.address.size());
  std::copy(adapter.address.begin(), adapter.address.end(), record.Address);
  return record;
}

const PciNetworkDevice* FindDevice(HDEVINFO devices, const SP_DEVINFO_DATA* device) {
  const auto* set = static_cast<const DeviceSet*>(devices);
  if (device->cbSize != sizeof(*device) || device->DevInst >= set->devices.size()) return nullptr;
  return &set->devices[device->DevInst];
}

// Writes `text` and its terminator if they fit.
bool WriteText(const std::string& text, BYTE* buffer, DWORD size) {
  if (text.size() >= size) return false;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

DWORD ListAdapters(IP_ADAPTER_INFO* buffer, ULONG* size) {
  if (HardwareOfThread() == nullptr || buffer == nullptr ||
      (*size != sizeof(IP_ADAPTER_INFO) && *size != size_asked_for)) {
    return ERROR_INVALID_PARAMETER;
  }
  if (const auto code = ScriptedFailure(PlatformCall::kGetAdaptersInfo)) return *code;
  const std::vector<NetworkAdapter> adapters = HardwareOfThread()->NetworkAdapters();
  if (adapters.empty()) return ERROR_NO_DATA;
  const auto needed = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
  if (needed > *size) {
    *size = size_asked_for = needed;
    return ERROR_BUFFER_OVERFLOW;
  }
  for (std::size_t i = 0; i < adapters.size(); ++i) {
    const bool last = i + 1 == adapters.size();
    const IP_ADAPTER_INFO record = MakeRecord(adapters[i], last ? nullptr : buffer + i + 1);
    std::memcpy(static_cast<void*>(buffer + i), &record, sizeof(record));
  }
  return ERROR_SUCCESS;
}

}  // namespace

DWORD GetAdaptersInfo(IP_ADAPTER_INFO* buffer, ULONG* size) {
  return UnlessOutOfMemory(ERROR_NOT_ENOUGH_MEMORY, [&] { return ListAdapters(buffer, size); });
}

HDEVINFO SetupDiGetClassDevsA(const GUID* device_class, const char* enumerator, void* parent,
                              DWORD flags) {
  if (HardwareOfThread() == nullptr || *device_class != kNetworkClass ||
      std::strcmp(enumerator, "PCI") != 0 || parent != nullptr || flags != DIGCF_PRESENT ||
      ScriptedFailure(PlatformCall::kSetupDiGetClassDevs)) {
    return INVALID_HANDLE_VALUE;
  }
  return UnlessOutOfMemory(INVALID_HANDLE_VALUE, []() -> HDEVINFO {
    return new DeviceSet{HardwareOfThread()->PciNetworkDevices()};
  });
}

BOOL SetupDiEnumDeviceInfo(HDEVINFO devices, DWORD index, SP_DEVINFO_DATA* device) {
  device->DevInst = index;
  return FindDevice(devices, device) != nullptr ? 1 : 0;
}

BOOL SetupDiDestroyDeviceInfoList(HDEVINFO devices) {
  delete static_cast<DeviceSet*>(devices);
  return 1;
}

BOOL SetupDiGetDeviceRegistryPropertyA(HDEVINFO devices, SP_DEVINFO_DATA* device, DWORD property,
                                       DWORD* type, BYTE* buffer, DWORD size, DWORD* needed) {
  const PciNetworkDevice* found = FindDevice(devices, device);
  if (found == nullptr || type != nullptr || size != kDeviceTextSize || needed != nullptr) return 0;
  if (property != SPDRP_FRIENDLYNAME && property != SPDRP_DEVICEDESC) return 0;
  const auto& text = property == SPDRP_FRIENDLYNAME ? found->friendly_name : found->description;
  return text && WriteText(*text, buffer, size) ? 1 : 0;
}

HKEY SetupDiOpenDevRegKey(HDEVINFO devices, SP_DEVINFO_DATA* device, DWORD scope, DWORD profile,
                          DWORD key_type, DWORD access) {
  const PciNetworkDevice* found = FindDevice(devices, device);
  if (found == nullptr || !found->has_driver_key || scope != DICS_FLAG_GLOBAL || profile != 0 ||
      key_type != DIREG_DRV || access != KEY_READ) {
    return INVALID_HANDLE_VALUE;
  }
  return UnlessOutOfMemory(INVALID_HANDLE_VALUE,
                           [&]() -> HKEY { return new RegistryKey{found->instance_id}; });
}

LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* buffer,
                      DWORD* size) {
  const auto& instance_id = static_cast<const RegistryKey*>(key)->instance_id;
  if (std::strcmp(name, "NetCfgInstanceId") != 0 || !instance_id) return ERROR_FILE_NOT_FOUND;
  if (reserved != nullptr || type != nullptr || *size != kDeviceTextSize) {
    return ERROR_INVALID_PARAMETER;
  }
  if (instance_id->size() > *size) return ERROR_MORE_DATA;
  // The registry promises no terminator, and this one has none.
  std::copy(instance_id->begin(), instance_id->end(), buffer);
  *size = static_cast<DWORD>(instance_id->size());
  return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY key) {
  delete static_cast<RegistryKey*>(key);
  return ERROR_SUCCESS;
}
