// A file descriptor that is closed with its scope, and system calls that are restarted after a
// signal.

#ifndef DEVICEID_PLATFORM_LINUX_DESCRIPTOR_H_
#define DEVICEID_PLATFORM_LINUX_DESCRIPTOR_H_

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace system_info {

// A negative number stands for no descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  // Preserves errno, which an earlier failure may have set.
  ~Descriptor() {
    const int error = errno;
    if (valid()) close(number_);
    errno = error;
  }

  bool valid() const { return number_ >= 0; }
  int get() const { return number_; }
  int release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

// Repeats `call` until no signal interrupts it.
template <typename Call>
auto RepeatInterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_DESCRIPTOR_H_
