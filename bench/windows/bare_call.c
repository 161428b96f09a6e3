#define COBJMACROS
#include <windows.h>

#include <iphlpapi.h>
#include <setupapi.h>
#include <shlobj.h>
#include <stdlib.h>
#include <string.h>
#include <wbemcli.h>

/* Where a file or folder of the library is, asked for each time as the library does. */
static const char* PathOf(int root, const char* name) {
  static char path[MAX_PATH + 64];
  SHGetFolderPathA(NULL, root, NULL, SHGFP_TYPE_CURRENT, path);
  return strcat(path, name);
}

static void ReadStoredFile(const char* path) {
  static char bytes[8192];
  DWORD size = 0;
  HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
  if (file == INVALID_HANDLE_VALUE) abort();
  ReadFile(file, bytes, sizeof(bytes), &size, NULL);
  CloseHandle(file);
}

static void ReadStoredFiles(void) {
  PathOf(CSIDL_COMMON_APPDATA, "\\Fennel");
  GetFileAttributesA(PathOf(CSIDL_COMMON_APPDATA, "\\BrindleQuayWorks"));
  GetFileAttributesA(PathOf(CSIDL_APPDATA, "\\Fennel"));
  GetFileAttributesA(PathOf(CSIDL_APPDATA, "\\BrindleQuayWorks"));
  ReadStoredFile(PathOf(CSIDL_COMMON_APPDATA, "\\BrindleQuayWorks\\device.idv2"));
  DeleteFileA(PathOf(CSIDL_APPDATA, "\\BrindleQuayWorks\\device.idv2"));
  ReadStoredFile(PathOf(CSIDL_COMMON_APPDATA, "\\BrindleQuayWorks\\hid_settings"));
}

static IWbemServices* Connect(void) {
  IWbemLocator* locator = NULL;
  IWbemServices* services = NULL;
  BSTR name = SysAllocString(L"ROOT\\CIMV2");
  CoCreateInstance(&CLSID_WbemLocator, NULL, CLSCTX_INPROC_SERVER, &IID_IWbemLocator,
                   (void**)&locator);
  IWbemLocator_ConnectServer(locator, name, NULL, NULL, NULL, WBEM_FLAG_CONNECT_USE_MAX_WAIT, NULL,
                             NULL, &services);
  CoSetProxyBlanket((IUnknown*)services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, NULL,
                    RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, NULL, EOAC_NONE);
  IWbemLocator_Release(locator);
  SysFreeString(name);
  return services;
}

static void ReadProperty(IWbemServices* services, const wchar_t* query_text, const wchar_t* name) {
  BSTR language = SysAllocString(L"WQL");
  BSTR query = SysAllocString(query_text);
  IEnumWbemClassObject* rows = NULL;
  IWbemClassObject* row = NULL;
  ULONG count = 0;
  VARIANT value;
  IWbemServices_ExecQuery(services, language, query,
                          WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, NULL, &rows);
  IEnumWbemClassObject_Next(rows, (LONG)WBEM_INFINITE, 1, &row, &count);
  if (count != 1) abort();
  IWbemClassObject_Get(row, name, 0, &value, NULL, NULL);
  VariantClear(&value);
  IWbemClassObject_Release(row);
  IEnumWbemClassObject_Release(rows);
  SysFreeString(query);
  SysFreeString(language);
}

static void ListAdapters(void) {
  ULONG size = sizeof(IP_ADAPTER_INFO);
  IP_ADAPTER_INFO* adapters = malloc(size);
  if (GetAdaptersInfo(adapters, &size) == ERROR_BUFFER_OVERFLOW) {
    free(adapters);
    adapters = malloc(size);
  }
  GetAdaptersInfo(adapters, &size);
  free(adapters);
}

static void ListNetworkDevices(void) {
  static const GUID network = {
      0x4d36e972, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};
  char name[260];
  DWORD index;
  SP_DEVINFO_DATA device = {0};
  HDEVINFO devices = SetupDiGetClassDevsA(&network, "PCI", NULL, DIGCF_PRESENT);
  device.cbSize = sizeof(device);
  for (index = 0; SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
    DWORD size = sizeof(name);
    HKEY key = SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ);
    RegQueryValueExA(key, "NetCfgInstanceId", NULL, NULL, (BYTE*)name, &size);
    RegCloseKey(key);
    SetupDiGetDeviceRegistryPropertyA(devices, &device, SPDRP_FRIENDLYNAME, NULL, (BYTE*)name,
                                      sizeof(name), NULL);
  }
  SetupDiDestroyDeviceInfoList(devices);
}

void MakeBareCalls(void);

void MakeBareCalls(void) {
  IWbemServices* services;
  ReadStoredFiles();
  CoInitializeEx(NULL, COINIT_MULTITHREADED);
  services = Connect();
  ReadProperty(services, L"SELECT VolumeSerialNumber FROM win32_logicaldisk WHERE deviceid=\"C:\"",
               L"VolumeSerialNumber");
  ReadProperty(services, L"SELECT IdentifyingNumber FROM Win32_ComputerSystemProduct",
               L"IdentifyingNumber");
  ReadProperty(services, L"SELECT SerialNumber FROM Win32_BaseBoard", L"SerialNumber");
  ListAdapters();
  ListNetworkDevices();
  IWbemServices_Release(services);
  CoUninitialize();
}
