// The entry point that the system calls when a process loads or unloads the library. Windows only.
//
// It touches no COM, file, registry or hardware: the loader's lock is held here.
//
// The system refuses to turn off the notifications of threads for a DLL with a TLS directory.
// MinGW's runtime has one: it frees the data of each thread that has seen an exception.

#include "platform/windows/runtime_handles.h"
#include "platform/windows_api.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  // The end of a process releases everything.
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) system_info::ReleaseRuntime();
  return TRUE;
}
