// The guard value and the failure handler of stack protection. MinGW builds only.
//
// The compiler's own version opens a cryptographic provider when the library is loaded. This reads
// the registry and loads more DLLs, while the loader's lock is held.

#include <cstdint>
#include <cstdlib>

#include "platform/windows_api.h"

namespace {

// A value that is hard to predict, from calls that neither block nor fail.
std::uintptr_t MakeGuard() {
  FILETIME now;
  LARGE_INTEGER count;
  GetSystemTimeAsFileTime(&now);
  QueryPerformanceCounter(&count);
  const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(&count);
  const std::uint64_t mixed = (static_cast<std::uint64_t>(now.dwLowDateTime) << 32) ^
                              static_cast<std::uint64_t>(count.QuadPart) ^
                              (static_cast<std::uint64_t>(GetCurrentProcessId()) << 16) ^
                              GetCurrentThreadId() ^ place;
  // The product spreads the differences between two starts over the upper half.
  const std::uint64_t spread = mixed * 0x9E3779B97F4A7C15u;
  // The zero byte ends a text that overruns into the guard.
  return static_cast<std::uintptr_t>(spread ^ (spread >> 32)) << 8;
}

}  // namespace

extern "C" {

std::uintptr_t __stack_chk_guard = MakeGuard();

// The stack is corrupt: no handler of the host may run on it.
[[noreturn]] void __stack_chk_fail() {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_STACK_BUFFER_OVERRUN));
  std::abort();
}

}  // extern "C"
