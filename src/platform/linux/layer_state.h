// State shared by the files of the layer and hidden from the library.

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

// The hardware snapshot that this thread took as it entered COM. Null outside COM.
Hardware* HardwareOfThread();

// The failure that the machine injects into `call`, if any.
std::optional<std::uint32_t> ScriptedFailure(PlatformCall call, std::string_view subject = {});

// Keeps ASCII and replaces the rest by '?', which is enough to name the subject of a failure.
std::string Subject(std::wstring_view text);

// Runs `call`, and returns `failure` if it runs out of memory, as calls of Windows do.
template <typename Result, typename Call>
Result UnlessOutOfMemory(Result failure, Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

// Counts one object in `counter` during its lifetime.
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
