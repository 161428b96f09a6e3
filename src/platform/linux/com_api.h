// COM with its strings and values, and the four WMI interfaces, for systems without the SDK.
//
// Only the library's own arguments are accepted: any other fails, so that a wrong constant fails
// here and not on a customer's PC. A thread has to enter COM before it makes an object, and a
// connection refuses queries until its proxy security is set.

#ifndef DEVICEID_PLATFORM_LINUX_COM_API_H_
#define DEVICEID_PLATFORM_LINUX_COM_API_H_

#include "platform/linux/base_types.h"

// Length-prefixed strings. SysAllocString returns null for null and when memory runs out.
using BSTR = wchar_t*;
BSTR SysAllocString(const wchar_t* text);
void SysFreeString(BSTR string);
UINT SysStringLen(BSTR string);

using VARTYPE = std::uint16_t;
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_BSTR = 8;

struct VARIANT {
  VARTYPE vt;
  union {
    LONG lVal;
    BSTR bstrVal;
  };
};
void VariantInit(VARIANT* value);
// Frees and empties the value.
HRESULT VariantClear(VARIANT* value);

// NOLINTBEGIN(bugprone-reserved-identifier): names of the SDK's COM support

// The exception of COM's helpers. It has no base class.
class _com_error {
 public:
  explicit _com_error(HRESULT code) : code_(code) {}
  HRESULT Error() const { return code_; }

 private:
  HRESULT code_;
};
[[noreturn]] void _com_issue_error(HRESULT code);

// NOLINTEND(bugprone-reserved-identifier)

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr HRESULT RPC_E_CHANGED_MODE = MakeHresult(0x80010106);
inline constexpr HRESULT CO_E_NOTINITIALIZED = MakeHresult(0x800401F0);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeHresult(0x80040154);

// Enters COM on this thread: S_OK the first time, S_FALSE for a further entry, RPC_E_CHANGED_MODE
// if the thread is in an apartment of the other kind. Each entry needs its CoUninitialize.
//
// Takes a snapshot of the hardware, which answers all queries until the CoUninitialize. Throws if
// that fails, since a caller that went on would take all values for missing.
HRESULT CoInitializeEx(void* reserved, DWORD model);
void CoUninitialize();

// Every interface is released once for each reference that was returned.
struct IUnknown {
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr GUID CLSID_WbemLocator = {
    0x4590f811, 0x1d3a, 0x11d0, {0x89, 0x1f, 0x00, 0xaa, 0x00, 0x4b, 0x2e, 0x24}};
inline constexpr GUID IID_IWbemLocator = {
    0xdc12a687, 0x737f, 0x11cf, {0x88, 0x4d, 0x00, 0xaa, 0x00, 0x4b, 0x2e, 0x24}};
HRESULT CoCreateInstance(const GUID& class_id, IUnknown* outer, DWORD context,
                         const GUID& interface_id, void** instance);

inline constexpr DWORD RPC_C_AUTHN_WINNT = 10;
inline constexpr DWORD RPC_C_AUTHZ_NONE = 0;
inline constexpr DWORD RPC_C_AUTHN_LEVEL_CALL = 3;
inline constexpr DWORD RPC_C_IMP_LEVEL_IMPERSONATE = 3;
inline constexpr DWORD EOAC_NONE = 0;
HRESULT CoSetProxyBlanket(IUnknown* proxy, DWORD authentication, DWORD authorization,
                          wchar_t* principal, DWORD authentication_level, DWORD impersonation_level,
                          void* identity, DWORD capabilities);

inline constexpr HRESULT WBEM_E_NOT_FOUND = MakeHresult(0x80041002);
inline constexpr HRESULT WBEM_E_INVALID_PARAMETER = MakeHresult(0x80041008);
inline constexpr HRESULT WBEM_E_INVALID_NAMESPACE = MakeHresult(0x8004100E);
inline constexpr HRESULT WBEM_E_INVALID_QUERY = MakeHresult(0x80041017);
inline constexpr HRESULT WBEM_E_INVALID_QUERY_TYPE = MakeHresult(0x80041018);
inline constexpr LONG WBEM_FLAG_CONNECT_USE_MAX_WAIT = 0x80;
inline constexpr LONG WBEM_FLAG_RETURN_IMMEDIATELY = 0x10;
inline constexpr LONG WBEM_FLAG_FORWARD_ONLY = 0x20;
inline constexpr LONG WBEM_INFINITE = -1;

using CIMTYPE = LONG;
inline constexpr CIMTYPE CIM_SINT32 = 3;
inline constexpr CIMTYPE CIM_STRING = 8;

struct IWbemContext;

struct IWbemClassObject : IUnknown {
  virtual HRESULT Get(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE* type,
                      LONG* flavor) = 0;

 protected:
  ~IWbemClassObject() = default;
};

struct IEnumWbemClassObject : IUnknown {
  // S_FALSE with a count of 0 if there is no further row.
  virtual HRESULT Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) = 0;

 protected:
  ~IEnumWbemClassObject() = default;
};

struct IWbemServices : IUnknown {
  virtual HRESULT ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                            IEnumWbemClassObject** rows) = 0;

 protected:
  ~IWbemServices() = default;
};

struct IWbemLocator : IUnknown {
  virtual HRESULT ConnectServer(BSTR resource, BSTR user, BSTR password, BSTR locale, LONG flags,
                                BSTR authority, IWbemContext* context,
                                IWbemServices** services) = 0;

 protected:
  ~IWbemLocator() = default;
};

namespace system_info {

// Simulates a host that put its thread into a single-threaded apartment. Inside, the library cannot
// use COM on this thread.
void EnterSingleThreadedApartment();
void LeaveSingleThreadedApartment();

// The number of this thread's entries into COM.
int ApartmentEntries();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_COM_API_H_
