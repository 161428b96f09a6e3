#include "support/clock_shift.h"

#include <utility>

namespace system_info {
namespace {

thread_local std::int64_t present = 0;

}  // namespace

std::int64_t PresentClockShift() { return present; }

std::int64_t SetClockShift(std::int64_t seconds) { return std::exchange(present, seconds); }

}  // namespace system_info
