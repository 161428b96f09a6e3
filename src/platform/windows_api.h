// The library's only access to the operating system.
//
// On Windows these are the SDK's own headers. Elsewhere our own small layer implements the calls
// that the library makes, with the same names and meaning.

#ifndef DEVICEID_PLATFORM_WINDOWS_API_H_
#define DEVICEID_PLATFORM_WINDOWS_API_H_

#if defined(_WIN32)

#include <comdef.h>
#include <fcntl.h>
#include <io.h>
#include <iphlpapi.h>
#include <setupapi.h>
#include <share.h>
#include <shlobj.h>
#include <sys/stat.h>
#include <wbemcli.h>
#include <windows.h>

#else

#include "platform/linux/com_api.h"
#include "platform/linux/file_api.h"
#include "platform/linux/network_api.h"
#include "platform/linux/runtime_api.h"

#endif

#endif  // DEVICEID_PLATFORM_WINDOWS_API_H_
