// Clock, local time and restartable text conversions, for systems without the SDK.

#ifndef DEVICEID_PLATFORM_LINUX_RUNTIME_API_H_
#define DEVICEID_PLATFORM_LINUX_RUNTIME_API_H_

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <cwchar>

#include "platform/linux/base_types.h"

// 100-nanosecond ticks since 1 January 1601 UTC, in two halves.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
void GetSystemTimeAsFileTime(FILETIME* time);

// NOLINTBEGIN(bugprone-reserved-identifier): names of the runtime library of Windows

using __time64_t = std::int64_t;

// Seconds since 1 January 1970 UTC. `time` must be null.
__time64_t _time64(__time64_t* time);

// Returns 0, or an error code if the time cannot be converted.
int _localtime64_s(std::tm* local, const __time64_t* time);

// NOLINTEND(bugprone-reserved-identifier)

// Writes the path of the Windows folder, terminated, and returns its length. A path that does not
// fit leaves the buffer alone and returns the size needed, terminator included. `size` must be 50.
UINT GetWindowsDirectoryW(wchar_t* buffer, UINT size);

namespace system_info {

// The conversions of the runtime library of Windows. In the default locale they map one to one up
// to 255, which the C library here does not; in any other locale they are those of the C library,
// except that the last character of the first may extend beyond its limit.
std::size_t wcsrtombs(char* destination, const wchar_t** source, std::size_t size,
                      std::mbstate_t* state);
std::size_t mbsrtowcs(wchar_t* destination, const char** source, std::size_t size,
                      std::mbstate_t* state);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_RUNTIME_API_H_
