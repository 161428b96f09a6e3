// The present time of the system, in the two forms that the library uses.

#ifndef DEVICEID_SUPPORT_CLOCK_H_
#define DEVICEID_SUPPORT_CLOCK_H_

#include <cstdint>

namespace system_info {

inline constexpr std::int64_t kTicksPerSecond = 10'000'000;

// 100-nanosecond ticks since 1 January 1970 00:00:00 UTC.
std::int64_t PresentTicks();

// Whole seconds since the same moment.
std::int64_t PresentSeconds();

struct TimeOfDay {
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// The local time of `seconds` since 1 January 1970 UTC, in the time zone of the machine. Midnight
// if the system cannot convert it.
TimeOfDay LocalTimeOfDay(std::int64_t seconds);

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_CLOCK_H_
