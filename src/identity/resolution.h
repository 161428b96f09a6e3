// Resolves a format 2.0 request. The id survives restarts and small hardware changes, is replaced
// after larger ones, and exists without readable hardware.
//
// The state is the device id files and the record beside them. There are four cases:
//
//                   a record                    no record
//   a stored id     a known machine             an id without a record
//   no stored id    the id file is missing      the first run
//
// There is no lock: of two runs at the same time the last write wins.

#ifndef DEVICEID_IDENTITY_RESOLUTION_H_
#define DEVICEID_IDENTITY_RESOLUTION_H_

#include <cstdint>

#include "hardware/os_manager.h"
#include "support/call_log.h"
#include "values/hid_result.h"
#include "values/host_buffers.h"

namespace system_info {

// Copies the id and then the log into `buffers`, and returns Success or BufferTooSmall. Both store
// the same. `flags` are ResolutionFlags.
//
// Returns UnexpectedFailure if there is a record without an id, or if the hardware has to be
// compared and cannot be listed. It has then written no id and no record, and both buffers are
// untouched. Throws what the manager and the storage throw; earlier writes stay.
HidResult ResolveDeviceId(OSManager& manager, HIDLog& log, const HostBuffers& buffers,
                          std::uint32_t flags);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_RESOLUTION_H_
