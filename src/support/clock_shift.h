// What the clock of this thread is ahead of the system's, so that a call can be played as it would
// go later.
//
// As with a file overlay, the shared library is compiled without the places at which it is asked
// for.

#ifndef DEVICEID_SUPPORT_CLOCK_SHIFT_H_
#define DEVICEID_SUPPORT_CLOCK_SHIFT_H_

#include <cstdint>

namespace system_info {

#if defined(DEVICEID_WITH_FILE_OVERLAY)

// In seconds.
std::int64_t PresentClockShift();

// Returns the shift that there was before.
std::int64_t SetClockShift(std::int64_t seconds);

#else

constexpr std::int64_t PresentClockShift() { return 0; }

#endif

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_CLOCK_SHIFT_H_
