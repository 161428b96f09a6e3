// Resolves a request for one of the formats 1.0 to 1.6.
//
// Formats up to 1.5 store nothing: every call makes the id from the hardware. Format 1.6 stores its
// id in "device.id" and, once that file exists, no longer reads the hardware.

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
// Returns Success or BufferTooSmall. Both store the same. Throws what the manager throws.
HidResult ResolveLegacyDeviceId(OSManager& manager, HIDLog& log, HidFormatVersion version,
                                const HostBuffers& buffers);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_LEGACY_RESOLUTION_H_
