// The offset of this thread's clock to the system's, for dry runs of later calls.
//
// Like the file overlay, it is compiled out of the shared library.

#ifndef DEVICEID_SUPPORT_CLOCK_SHIFT_H_
#define DEVICEID_SUPPORT_CLOCK_SHIFT_H_

#include <cstdint>

namespace system_info {

#if defined(DEVICEID_WITH_FILE_OVERLAY)

// In seconds.
std::int64_t PresentClockShift();

// Returns the previous shift.
std::int64_t SetClockShift(std::int64_t seconds);

#else

constexpr std::int64_t PresentClockShift() { return 0; }

#endif

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_CLOCK_SHIFT_H_
