#include "platform/windows/runtime_handles.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/windows_api.h"

namespace {

// The runtime's mutexes are few, and nearly all are static and never destroyed.
std::array<std::atomic<HANDLE>, 64> semaphores;

// Exchanges one `old` for `value` and returns whether there was one.
bool Replace(HANDLE old, HANDLE value) {
  return std::any_of(semaphores.begin(), semaphores.end(), [=](std::atomic<HANDLE>& place) {
    HANDLE expected = old;
    return place.compare_exchange_strong(expected, value);
  });
}

// Of the slots in the threads' storage, each one more than its number; 0 is none.
std::array<std::atomic<DWORD>, 8> slots;

}  // namespace

extern "C" {

HANDLE WINAPI OpenRuntimeSemaphore(LPSECURITY_ATTRIBUTES security, LONG count, LONG most, LPCWSTR) {
  const HANDLE semaphore = CreateSemaphoreA(security, count, most, nullptr);
  Replace(nullptr, semaphore);
  return semaphore;
}

// The name of the real import stands for this function everywhere in the library.
DWORD WINAPI OpenRuntimeSlot() {
  HMODULE system = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, "kernel32.dll", &system);
  const auto alloc = reinterpret_cast<void*>(GetProcAddress(system, "TlsAlloc"));
  const DWORD slot = reinterpret_cast<decltype(&TlsAlloc)>(alloc)();
  for (std::atomic<DWORD>& place : slots) {
    DWORD none = 0;
    if (slot == TLS_OUT_OF_INDEXES || place.compare_exchange_strong(none, slot + 1)) break;
  }
  return slot;
}

// At load the 32-bit runtime asks for a shared copy of itself, which a host may have brought along,
// and would tell that of the library's unwind tables. The library has its own, which looks nowhere
// else, and would find no handler for any exception.
HMODULE WINAPI FindSharedRuntime(LPCSTR /*name*/) { return nullptr; }

// The linker puts these in place of the imports by which the runtime does so.
decltype(&OpenRuntimeSemaphore) runtime_semaphore_import = OpenRuntimeSemaphore;
decltype(&OpenRuntimeSlot) runtime_slot_import = OpenRuntimeSlot;
decltype(&FindSharedRuntime) runtime_module_import = FindSharedRuntime;

// The head of the runtime's own type.
struct RuntimeMutex {
  long counter;
  HANDLE semaphore;
};

void __real___gthr_win32_mutex_destroy(RuntimeMutex* mutex);

// The few mutexes that the runtime does destroy may be destroyed after ReleaseRuntime. The linker
// sends them here.
void __wrap___gthr_win32_mutex_destroy(RuntimeMutex* mutex) {
  if (Replace(mutex->semaphore, nullptr)) __real___gthr_win32_mutex_destroy(mutex);
}

}  // extern "C"

// Declared in no header of the runtime.
namespace __gnu_cxx {
void __freeres() noexcept;
}

namespace system_info {

void ReleaseRuntime() {
  for (std::atomic<HANDLE>& place : semaphores) {
    const HANDLE semaphore = place.exchange(nullptr);
    if (semaphore != nullptr) CloseHandle(semaphore);
  }
  for (std::atomic<DWORD>& place : slots) {
    const DWORD slot = place.exchange(0);
    if (slot != 0) TlsFree(slot - 1);
  }
  __gnu_cxx::__freeres();
}

}  // namespace system_info
