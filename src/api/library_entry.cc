// The entry point that the system calls when a process loads the library. Windows only.
//
// It touches no COM, file, registry or hardware: the loader's lock is held here.

#include "platform/windows_api.h"

// NOLINTNEXTLINE(readability-identifier-naming): the loader looks for this name
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}
