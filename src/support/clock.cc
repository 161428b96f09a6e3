#include "support/clock.h"

#include <ctime>

#include "platform/windows_api.h"
#include "support/clock_shift.h"

namespace system_info {
namespace {

// File times count from 1 January 1601.
constexpr std::int64_t kTicksFrom1601To1970 = 116'444'736'000'000'000;

}  // namespace

std::int64_t PresentTicks() {
  FILETIME time = {};
  GetSystemTimeAsFileTime(&time);
  const std::uint64_t ticks =
      (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return static_cast<std::int64_t>(ticks) - kTicksFrom1601To1970 +
         PresentClockShift() * kTicksPerSecond;
}

std::int64_t PresentSeconds() { return _time64(nullptr) + PresentClockShift(); }

TimeOfDay LocalTimeOfDay(std::int64_t seconds) {
  const __time64_t time = seconds;
  std::tm local = {};
  if (_localtime64_s(&local, &time) != 0) return {};
  return {local.tm_hour, local.tm_min, local.tm_sec};
}

}  // namespace system_info
