// The result of a request for an id, as the host receives it.

#ifndef DEVICEID_IDENTITY_HID_RESULT_H_
#define DEVICEID_IDENTITY_HID_RESULT_H_

namespace system_info {

// The numbers are part of the interface to hosts. 2 is not assigned.
enum class HidResult : int {
  Success = 0,
  BufferTooSmall = 1,
  StandardFailure = 3,
  UnexpectedFailure = 4,
  NoDeviceIdBuffer = 5,
  UnsupportedVersion = 6,
  NoVersion = 7,
  NotSupportedWithVersion = 8,
};

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_HID_RESULT_H_
