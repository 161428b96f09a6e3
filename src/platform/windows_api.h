// The one door through which the library reaches the operating system.
//
// On Windows these are the SDK's own headers. Elsewhere a small layer of ours offers the same names
// with the same meaning, as far as the library calls them.

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
