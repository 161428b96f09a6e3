#include "support/failing_allocation.h"

#include <cerrno>
#include <cstdlib>
#include <new>

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void* __real_malloc(std::size_t size);
extern "C" int __real_openat(int folder, const char* path, int flags, unsigned mode);
extern "C" int __real_socket(int family, int type, int protocol);
// NOLINTEND(bugprone-reserved-identifier)

namespace {

struct Countdown {
  int remaining = 0;  // 0 while no failure is wanted.
  bool lasting = false;
  bool failed = false;

  bool FailsNow() {
    if (remaining == 0 || (remaining > 1 && remaining-- > 1)) return false;
    if (!lasting) remaining = 0;
    failed = true;
    return true;
  }
};

thread_local Countdown new_countdown;
thread_local Countdown malloc_countdown;
thread_local Countdown open_countdown;

void* Allocate(std::size_t size) {
  if (new_countdown.FailsNow()) return nullptr;
  // Past the countdown of malloc, which is for those who call malloc by that name.
  return __real_malloc(size == 0 ? 1 : size);
}

}  // namespace

extern "C" void* __wrap_malloc(std::size_t size) {
  return malloc_countdown.FailsNow() ? nullptr : __real_malloc(size);
}

extern "C" int __wrap_openat(int folder, const char* path, int flags, unsigned mode) {
  errno = EMFILE;
  return open_countdown.FailsNow() ? -1 : __real_openat(folder, path, flags, mode);
}

extern "C" int __wrap_socket(int family, int type, int protocol) {
  errno = EMFILE;
  return open_countdown.FailsNow() ? -1 : __real_socket(family, type, protocol);
}

void* operator new(std::size_t size) {
  if (void* memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace system_info {

FailingNew::FailingNew(int nth, bool lasting) { new_countdown = {nth, lasting, false}; }
FailingNew::~FailingNew() { new_countdown = {}; }
bool FailingNew::failed() const { return new_countdown.failed; }

FailingMalloc::FailingMalloc(int nth) { malloc_countdown = {nth, false, false}; }
FailingMalloc::~FailingMalloc() { malloc_countdown = {}; }

FailingOpen::FailingOpen(int nth) { open_countdown = {nth, false, false}; }
FailingOpen::~FailingOpen() { open_countdown = {}; }
bool FailingOpen::failed() const { return open_countdown.failed; }

}  // namespace system_info
