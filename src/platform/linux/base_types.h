// The basic types of the Windows API, in their Windows widths.

#ifndef DEVICEID_PLATFORM_LINUX_BASE_TYPES_H_
#define DEVICEID_PLATFORM_LINUX_BASE_TYPES_H_

#include <cstdint>

using BOOL = int;
using BYTE = std::uint8_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using HRESULT = LONG;
using HANDLE = void*;

// Makes an HRESULT constant from its usual unsigned notation.
constexpr HRESULT MakeHresult(std::uint32_t code) { return static_cast<HRESULT>(code); }

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_POINTER = MakeHresult(0x80004003);
inline constexpr HRESULT E_FAIL = MakeHresult(0x80004005);
inline constexpr HRESULT E_ACCESSDENIED = MakeHresult(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = MakeHresult(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = MakeHresult(0x80070057);

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_NO_DATA = 232;
inline constexpr DWORD ERROR_MORE_DATA = 234;

// The error code of this thread's last failed call.
DWORD GetLastError();
void SetLastError(DWORD code);

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];

  friend bool operator==(const GUID&, const GUID&) = default;
};

// The value of all invalid handles. A number as on Windows.
// NOLINTNEXTLINE(performance-no-int-to-ptr,misc-misplaced-const)
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

#endif  // DEVICEID_PLATFORM_LINUX_BASE_TYPES_H_
