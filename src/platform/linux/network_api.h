// The adapter list, the present PCI network devices and their registry keys, for systems without
// the SDK. Only the library's own arguments are accepted; any other fails.

#ifndef DEVICEID_PLATFORM_LINUX_NETWORK_API_H_
#define DEVICEID_PLATFORM_LINUX_NETWORK_API_H_

#include <cstddef>

#include "platform/linux/base_types.h"

// One record, of the size that it has on 32-bit Windows.
struct alignas(8) IP_ADAPTER_INFO {
  static constexpr std::size_t kSize = 648;

  IP_ADAPTER_INFO* Next;
  char AdapterName[260];
  char Description[132];
  UINT AddressLength;
  BYTE Address[8];
  BYTE reserved[kSize - sizeof(void*) - 260 - 132 - sizeof(UINT) - 8];
};
static_assert(sizeof(IP_ADAPTER_INFO) == IP_ADAPTER_INFO::kSize);

// Fills the buffer with a chain of records. Returns ERROR_BUFFER_OVERFLOW, and the required bytes
// in `size`, if the buffer is too small, and ERROR_NO_DATA if there is no adapter.
DWORD GetAdaptersInfo(IP_ADAPTER_INFO* buffer, ULONG* size);

using HDEVINFO = void*;

struct SP_DEVINFO_DATA {
  DWORD cbSize;
  GUID ClassGuid;
  DWORD DevInst;
  std::uintptr_t Reserved;
};

inline constexpr DWORD DIGCF_PRESENT = 2;
HDEVINFO SetupDiGetClassDevsA(const GUID* device_class, const char* enumerator, void* parent,
                              DWORD flags);
BOOL SetupDiEnumDeviceInfo(HDEVINFO devices, DWORD index, SP_DEVINFO_DATA* device);
BOOL SetupDiDestroyDeviceInfoList(HDEVINFO devices);

inline constexpr DWORD SPDRP_DEVICEDESC = 0;
inline constexpr DWORD SPDRP_FRIENDLYNAME = 12;
BOOL SetupDiGetDeviceRegistryPropertyA(HDEVINFO devices, SP_DEVINFO_DATA* device, DWORD property,
                                       DWORD* type, BYTE* buffer, DWORD size, DWORD* needed);

using HKEY = void*;
inline constexpr DWORD DICS_FLAG_GLOBAL = 1;
inline constexpr DWORD DIREG_DRV = 2;
inline constexpr DWORD KEY_READ = 0x20019;
HKEY SetupDiOpenDevRegKey(HDEVINFO devices, SP_DEVINFO_DATA* device, DWORD scope, DWORD profile,
                          DWORD key_type, DWORD access);
LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* buffer,
                      DWORD* size);
LONG RegCloseKey(HKEY key);

#endif  // DEVICEID_PLATFORM_LINUX_NETWORK_API_H_
