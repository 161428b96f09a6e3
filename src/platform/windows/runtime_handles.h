// What MinGW's C++ runtime, which is linked into the DLL, would leave behind when it is unloaded.

#ifndef DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_
#define DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_

namespace system_info {

// Gives back what the runtime keeps until the end of the process: the semaphores of its mutexes,
// its TLS index, and the memory that it sets aside for exceptions; but not what it keeps for each
// thread that goes on. Only for a library that is being unloaded, when no thread runs its code any
// more.
void ReleaseRuntime();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_WINDOWS_RUNTIME_HANDLES_H_
