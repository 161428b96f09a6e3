#include "platform/windows/runtime_handles.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/windows_api.h"

// Each repair below is for GCC 12's runtime of MinGW-w64 with Win32 threads, which Debian's
// i686-w64-mingw32 and x86_64-w64-mingw32 compilers link into the DLL. A runtime that uses the
// system's slim locks and native thread storage (GCC 13 with the mcf thread model, LLVM's libc++,
// the runtime of MSVC) needs none of them. The test "a host that loads and unloads the library
// again and again" says whether a repair can go: it counts handles, TLS indexes and heap blocks
// over a hundred loads and calls.

namespace {

// The semaphores of the runtime's mutexes.
//
// Two mutexes are made on first use and never destroyed: that of the 32-bit runtime's list of
// unwind tables, which each load makes, and that of the emulated thread-local storage, which the
// first exception makes. Without the repair each load and unload leaves one handle open in a 32-bit
// process, and one more in any process if an exception was thrown.
std::array<std::atomic<HANDLE>, 16> semaphores;

// Replaces one entry `old` by `value`. False if there is none.
bool Replace(HANDLE old, HANDLE value) {
  return std::any_of(semaphores.begin(), semaphores.end(), [=](std::atomic<HANDLE>& place) {
    HANDLE expected = old;
    return place.compare_exchange_strong(expected, value);
  });
}

// TLS indexes, stored plus one; 0 marks a free entry.
//
// The emulated thread-local storage, in which the runtime stores the exceptions that a thread is
// handling, allocates an index at the first exception and never releases it. A process has 1088
// indexes: after about as many loads whose call met an exception, the runtime ended the host.
std::array<std::atomic<DWORD>, 8> tls_indexes;

}  // namespace

extern "C" {

// The linker replaces the imports by which the runtime allocates what it does not release by these
// functions (runtime_imports_*.ld).

HANDLE WINAPI OpenRuntimeSemaphore(LPSECURITY_ATTRIBUTES security, LONG count, LONG most, LPCWSTR) {
  const HANDLE semaphore = CreateSemaphoreA(security, count, most, nullptr);
  Replace(nullptr, semaphore);
  return semaphore;
}

DWORD WINAPI OpenRuntimeTlsIndex() {
  // A plain call would call this function again.
  HMODULE system = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, "kernel32.dll", &system);
  const auto alloc = reinterpret_cast<void*>(GetProcAddress(system, "TlsAlloc"));
  const DWORD index = reinterpret_cast<decltype(&TlsAlloc)>(alloc)();
  for (std::atomic<DWORD>& place : tls_indexes) {
    DWORD none = 0;
    if (index == TLS_OUT_OF_INDEXES || place.compare_exchange_strong(none, index + 1)) break;
  }
  return index;
}

// At load the 32-bit runtime looks for a shared copy of itself, libgcc_s_dw2-1.dll, in the process
// and registers the DLL's unwind tables there if the host has loaded it. The DLL's own unwinder,
// which is linked into it, then finds no handler for any exception, and the first one ends the
// host. This happens in every 32-bit host that uses MinGW's shared runtime; there is a story of
// such a host. The repair can go once the 32-bit compiler unwinds without registered tables.
HMODULE WINAPI FindSharedRuntime(LPCSTR /*name*/) { return nullptr; }

decltype(&OpenRuntimeSemaphore) runtime_semaphore_import = OpenRuntimeSemaphore;
decltype(&OpenRuntimeTlsIndex) runtime_tls_import = OpenRuntimeTlsIndex;
decltype(&FindSharedRuntime) runtime_module_import = FindSharedRuntime;

// The first members of the runtime's own type.
struct RuntimeMutex {
  long counter;
  HANDLE semaphore;
};

void __real___gthr_win32_mutex_destroy(RuntimeMutex* mutex);

// The runtime does destroy the mutex of its memory for exceptions, but only after ReleaseRuntime
// has closed the semaphore. The linker redirects that call to this function (--wrap). Otherwise the
// handle would be closed twice, when its number may already belong to another handle.
void __wrap___gthr_win32_mutex_destroy(RuntimeMutex* mutex) {
  if (Replace(mutex->semaphore, nullptr)) __real___gthr_win32_mutex_destroy(mutex);
}

}  // extern "C"

// Frees the runtime's emergency memory for exceptions: one heap block, which each load allocates
// and each unload would leak. No header of the runtime declares it.
namespace __gnu_cxx {
void __freeres() noexcept;
}

namespace system_info {

void ReleaseRuntime() {
  for (std::atomic<HANDLE>& place : semaphores) {
    const HANDLE semaphore = place.exchange(nullptr);
    if (semaphore != nullptr) CloseHandle(semaphore);
  }
  for (std::atomic<DWORD>& place : tls_indexes) {
    const DWORD index = place.exchange(0);
    if (index != 0) TlsFree(index - 1);
  }
  __gnu_cxx::__freeres();
}

}  // namespace system_info
