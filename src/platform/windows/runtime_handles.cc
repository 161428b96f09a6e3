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

}  // namespace

extern "C" {

HANDLE WINAPI OpenRuntimeSemaphore(LPSECURITY_ATTRIBUTES security, LONG count, LONG most, LPCWSTR) {
  const HANDLE semaphore = CreateSemaphoreA(security, count, most, nullptr);
  Replace(nullptr, semaphore);
  return semaphore;
}

// The linker puts this in place of the import by which the runtime opens its semaphores.
decltype(&OpenRuntimeSemaphore) runtime_semaphore_import = OpenRuntimeSemaphore;

// The head of the runtime's own type.
struct RuntimeMutex {
  long counter;
  HANDLE semaphore;
};

// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the linker's names
int __real___gthr_win32_mutex_destroy(RuntimeMutex* mutex);

// The few mutexes that the runtime does destroy may be destroyed after ReleaseRuntime.
int __wrap___gthr_win32_mutex_destroy(RuntimeMutex* mutex) {
  return Replace(mutex->semaphore, nullptr) ? __real___gthr_win32_mutex_destroy(mutex) : 0;
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
}

// Declared in no header of the runtime.
namespace __gnu_cxx {
void __freeres() noexcept;  // NOLINT(bugprone-reserved-identifier, readability-identifier-naming)
}

namespace system_info {

void ReleaseRuntime() {
  for (std::atomic<HANDLE>& place : semaphores) {
    const HANDLE semaphore = place.exchange(nullptr);
    if (semaphore != nullptr) CloseHandle(semaphore);
  }
  __gnu_cxx::__freeres();
}

}  // namespace system_info
