// The flags of a host's request for format 2.0.

#ifndef DEVICEID_VALUES_RESOLUTION_FLAGS_H_
#define DEVICEID_VALUES_RESOLUTION_FLAGS_H_

#include <cstdint>

#include "deviceid.h"

namespace system_info {

// Bits of the hosts' mask. Other bits are ignored. The numbers are those of the host's header.
enum ResolutionFlags : std::uint32_t {
  SkipDateCheck = DEVICEID_SKIP_DATE_CHECK,    // The age of the record does not matter.
  ForceRandomHid = DEVICEID_FORCE_RANDOM_HID,  // The hardware string counts as empty.
  // The list of hardware ids comes from a file.
  UseEmulatedHardwareIds = DEVICEID_USE_EMULATED_HARDWARE_IDS,
};

inline constexpr std::uint32_t kNoFlags = 0;

}  // namespace system_info

#endif  // DEVICEID_VALUES_RESOLUTION_FLAGS_H_
