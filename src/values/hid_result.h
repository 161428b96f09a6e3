// The result of a request for an id, as the host receives it.

#ifndef DEVICEID_VALUES_HID_RESULT_H_
#define DEVICEID_VALUES_HID_RESULT_H_

#include "deviceid.h"

namespace system_info {

// The numbers are those of the host's header, which says what each of them means.
enum class HidResult : int {
  Success = DEVICEID_SUCCESS,
  BufferTooSmall = DEVICEID_BUFFER_TOO_SMALL,
  StandardFailure = DEVICEID_STANDARD_FAILURE,
  UnexpectedFailure = DEVICEID_UNEXPECTED_FAILURE,
  NoDeviceIdBuffer = DEVICEID_NO_DEVICE_ID_BUFFER,
  UnsupportedVersion = DEVICEID_UNSUPPORTED_VERSION,
  NoVersion = DEVICEID_NO_VERSION,
  NotSupportedWithVersion = DEVICEID_NOT_SUPPORTED_WITH_VERSION,
};

}  // namespace system_info

#endif  // DEVICEID_VALUES_HID_RESULT_H_
