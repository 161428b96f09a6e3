// How a request for one of the formats 1.0 to 1.6 is answered.
//
// Formats up to 1.5 keep nothing: the id is made anew from the hardware in every call. Format 1.6
// keeps its id in "device.id" and, once it is there, no longer looks at the hardware.

#ifndef DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_
#define DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_

#include <cstdint>
#include <memory>

#include "api/format_version.h"
#include "hardware/os_manager.h"
#include "identity/hid_result.h"
#include "support/call_log.h"

namespace system_info {

// Copies the id of `version`, which is below 2.0, into `device_id` and then the log into
// `log_buffer`. Both sizes are in bytes and count the terminator; `log_buffer` may be null.
//
// Returns Success or BufferTooSmall. What is stored does not depend on which of the two it is.
// Throws what the manager throws.
HidResult ResolveLegacyDeviceId(const std::unique_ptr<OSManager>& manager,
                                const std::shared_ptr<HIDLog>& log, HidFormatVersion version,
                                char* device_id, std::uint32_t device_id_size, char* log_buffer,
                                std::uint32_t log_size);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_
