// Releases what MinGW's C++ runtime, which is linked into the DLL, would leak at unload.

#ifndef DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_
#define DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_

namespace system_info {

// Releases the semaphores of the runtime's mutexes, its TLS index, and its emergency memory for
// exceptions, but not the data of running threads. Only for a library that is being unloaded, when
// no thread runs its code any more.
void ReleaseRuntime();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_
