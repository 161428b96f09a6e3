#include "support/failing_allocation.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <new>

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void* __real_malloc(std::size_t size);
extern "C" int __real_openat(int folder, const char* path, int flags, unsigned mode);
extern "C" int __real_socket(int family, int type, int protocol);
extern "C" ssize_t __real_read(int file, void* buffer, std::size_t size);
extern "C" ssize_t __real_recvfrom(int socket, void* buffer, std::size_t size, int flags,
                                   sockaddr* sender, socklen_t* sender_size);
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
thread_local Countdown call_countdown;
thread_local int call_error = 0;

// Sets errno. `errors` are those that the call can have.
bool FailsNow(std::initializer_list<int> errors) {
  const bool counts = std::find(errors.begin(), errors.end(), call_error) != errors.end();
  errno = call_error;
  return counts && call_countdown.FailsNow();
}

void* Allocate(std::size_t size) {
  if (new_countdown.FailsNow()) return nullptr;
  // Past the countdown of malloc, which is for those who call malloc by that name.
  return __real_malloc(size == 0 ? 1 : size);
}

}  // namespace

extern "C" void* __wrap_malloc(std::size_t size) {
  return malloc_countdown.FailsNow() ? nullptr : __real_malloc(size);
}

// No open may leave a descriptor to a program that the host starts meanwhile.
extern "C" int __wrap_openat(int folder, const char* path, int flags, unsigned mode) {
  if ((flags & O_CLOEXEC) == 0) std::abort();
  return FailsNow({EMFILE, EINTR}) ? -1 : __real_openat(folder, path, flags, mode);
}

extern "C" int __wrap_socket(int family, int type, int protocol) {
  if ((type & SOCK_CLOEXEC) == 0) std::abort();
  return FailsNow({EMFILE}) ? -1 : __real_socket(family, type, protocol);
}

extern "C" ssize_t __wrap_read(int file, void* buffer, std::size_t size) {
  return FailsNow({ENOMEM, EINTR}) ? -1 : __real_read(file, buffer, size);
}

extern "C" ssize_t __wrap_recvfrom(int socket, void* buffer, std::size_t size, int flags,
                                   sockaddr* sender, socklen_t* sender_size) {
  if (FailsNow({ENOMEM, EINTR})) return -1;
  return __real_recvfrom(socket, buffer, size, flags, sender, sender_size);
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

FailingCall::FailingCall(int nth, int error) {
  call_countdown = {nth, false, false};
  call_error = error;
}
FailingCall::~FailingCall() { call_countdown = {}; }
bool FailingCall::failed() const { return call_countdown.failed; }

}  // namespace system_info
