// The two buffers that a host passes with every request, as one value.
//
// The host owns the buffers. Nothing keeps a HostBuffers after the call that it came with.

#ifndef DEVICEID_VALUES_HOST_BUFFERS_H_
#define DEVICEID_VALUES_HOST_BUFFERS_H_

#include <cstdint>

#include "support/call_log.h"
#include "values/device_id.h"
#include "values/hid_result.h"

namespace system_info {

// Both sizes are in bytes and count the terminator. `log` may be null.
struct HostBuffers {
  char* device_id = nullptr;
  std::uint32_t device_id_size = 0;
  char* log = nullptr;
  std::uint32_t log_size = 0;

  // Copies `id` into the id buffer, truncated if it does not fit. Returns Success or
  // BufferTooSmall.
  HidResult PutId(const DeviceId& id) const {
    return CopyToBuffer(id, device_id, device_id_size) == 0 ? HidResult::Success
                                                            : HidResult::BufferTooSmall;
  }

  // Copies the text of `call_log` into the log buffer, truncated if it does not fit.
  void PutLog(const HIDLog& call_log) const { call_log.CopyTo(log, log_size); }
};

}  // namespace system_info

#endif  // DEVICEID_VALUES_HOST_BUFFERS_H_
