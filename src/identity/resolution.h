// How a request for format 2.0 is answered: with an id that stays the same across runs and small
// changes of the hardware, that changes when too much of it has changed, and that can be had when
// no hardware can be read.
//
// All that is remembered lies in the device id files and in the record beside them. What happens
// depends on which of the two are there:
//
//                      a record                       no record
//   a stored id        A  a known machine             B  an id without a record
//   no stored id       D  the id file has gone        C  the first run
//
// There is no lock: of two runs at the same time the last save stands.

#ifndef DEVICEID_IDENTITY_RESOLUTION_H_
#define DEVICEID_IDENTITY_RESOLUTION_H_

#include <cstdint>
#include <memory>

#include "hardware/os_manager.h"
#include "identity/hid_result.h"
#include "support/call_log.h"

namespace system_info {

// Bits of a mask that hosts pass. Others are ignored.
enum ResolutionFlags : std::uint32_t {
  SkipDateCheck = 1,           // The age of the record does not matter.
  ForceRandomHid = 2,          // The hardware string counts as empty.
  UseEmulatedHardwareIds = 4,  // The list of hardware ids comes from a file.
};

// Copies the id into `device_id` and then the log into `log_buffer`, and returns Success or
// BufferTooSmall. Both sizes are in bytes and count the terminator; `log_buffer` may be null. What
// is stored does not depend on whether the id fits.
//
// Returns UnexpectedFailure, with no id and no record written and both buffers untouched, where
// there is a record without an id, and where the hardware has to be compared and cannot be listed.
// Throws what the manager and the storage throw; what was written until then stays.
HidResult ResolveDeviceId(const std::unique_ptr<OSManager>& manager,
                          const std::shared_ptr<HIDLog>& log, char* device_id,
                          std::uint32_t device_id_size, char* log_buffer, std::uint32_t log_size,
                          std::uint32_t flags);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_RESOLUTION_H_
