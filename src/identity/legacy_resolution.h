// How a request for one of the formats 1.0 to 1.6 is answered.
//
// Formats up to 1.5 keep nothing: the id is made anew from the hardware in every call. Format 1.6
// keeps its id in "device.id" and, once it is there, no longer looks at the hardware.

#ifndef DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_
#define DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_

#include <cstdint>

#include "hardware/os_manager.h"
#include "support/call_log.h"
#include "values/format_version.h"
#include "values/hid_result.h"
#include "values/host_buffers.h"

namespace system_info {

// Copies the id of `version`, which is below 2.0, and then the log into `buffers`.
//
// Returns Success or BufferTooSmall. What is stored does not depend on which of the two it is.
// Throws what the manager throws.
HidResult ResolveLegacyDeviceId(OSManager& manager, HIDLog& log, HidFormatVersion version,
                                const HostBuffers& buffers);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_
