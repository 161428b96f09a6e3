// What the files of the layer share among themselves. The library does not see it.

#ifndef DEVICEID_PLATFORM_LINUX_LAYER_STATE_H_
#define DEVICEID_PLATFORM_LINUX_LAYER_STATE_H_

#include <atomic>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/base_types.h"
#include "platform/linux/machine.h"

namespace system_info {

struct LiveCounters {
  std::atomic<int> com_objects{0};
  std::atomic<int> com_strings{0};
  std::atomic<int> handles{0};
  std::atomic<int> apartment_entries{0};
  std::atomic<int> looks_at_hardware{0};
  std::atomic<int> objects_after_com{0};
};
LiveCounters& Live();

// What this thread found as it entered COM. Null outside COM.
Hardware* HardwareOfThread();

// The failure that the machine injects into `call`, if any.
std::optional<std::uint32_t> ScriptedFailure(PlatformCall call, std::string_view subject = {});

// ASCII as it is, '?' for the rest: enough to tell a failure what it is about.
std::string Subject(std::wstring_view text);

// Runs `call`, and gives `failure` if it runs out of memory, as calls of Windows do.
template <typename Result, typename Call>
Result UnlessOutOfMemory(Result failure, Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

// Counts one object of `counter` for as long as it lives.
class Counted {
 public:
  explicit Counted(std::atomic<int>& counter) : counter_(counter) { ++counter_; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --counter_; }

 private:
  std::atomic<int>& counter_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LAYER_STATE_H_
