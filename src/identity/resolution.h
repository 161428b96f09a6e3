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

#include "hardware/os_manager.h"
#include "support/call_log.h"
#include "values/hid_result.h"
#include "values/host_buffers.h"

namespace system_info {

// Copies the id and then the log into `buffers`, and returns Success or BufferTooSmall. What is
// stored does not depend on whether the id fits. `flags` are ResolutionFlags.
//
// Returns UnexpectedFailure, with no id and no record written and both buffers untouched, where
// there is a record without an id, and where the hardware has to be compared and cannot be listed.
// Throws what the manager and the storage throw; what was written until then stays.
HidResult ResolveDeviceId(OSManager& manager, HIDLog& log, const HostBuffers& buffers,
                          std::uint32_t flags);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_RESOLUTION_H_
