// The library in C++: texts in place of buffers, and results with names.

#ifndef EXAMPLES_CPP_DEVICE_ID_HPP_
#define EXAMPLES_CPP_DEVICE_ID_HPP_

#include <array>
#include <string>
#include <vector>

#include "deviceid.h"

namespace example {

enum class Result {
  kSuccess = DEVICEID_SUCCESS,
  kBufferTooSmall = DEVICEID_BUFFER_TOO_SMALL,
  kStandardFailure = DEVICEID_STANDARD_FAILURE,
  kUnexpectedFailure = DEVICEID_UNEXPECTED_FAILURE,
  kNoDeviceIdBuffer = DEVICEID_NO_DEVICE_ID_BUFFER,
  kUnsupportedVersion = DEVICEID_UNSUPPORTED_VERSION,
  kNoVersion = DEVICEID_NO_VERSION,
  kNotSupportedWithVersion = DEVICEID_NOT_SUPPORTED_WITH_VERSION,
};

struct Answer {
  Result result;
  std::string id;   // empty unless `result` is kSuccess
  std::string log;  // to be kept with the id: it tells why the id is what it is
};

// The id of this PC in the format `format`. Throws std::bad_alloc and nothing else.
inline Answer GetDeviceId(const std::string& format) {
  // Some results leave a buffer as it is: both start out as empty texts.
  std::array<char, DEVICEID_ID_SIZE> id = {};
  std::vector<char> log(DEVICEID_LOG_SIZE, '\0');
  const auto result = static_cast<Result>(
      GetHardwareId(id.data(), DEVICEID_ID_SIZE, format.c_str(), log.data(), DEVICEID_LOG_SIZE));
  return {result, result == Result::kSuccess ? id.data() : "", log.data()};
}

}  // namespace example

#endif  // EXAMPLES_CPP_DEVICE_ID_HPP_
