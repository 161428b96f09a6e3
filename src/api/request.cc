#include "api/request.h"

namespace system_info {

HidResult CheckArguments(const Request& request) {
  if (request.buffers.device_id == nullptr) return HidResult::NoDeviceIdBuffer;
  if (request.version == nullptr || *request.version == '\0') return HidResult::NoVersion;
  if (!IsSupportedVersion(request.version)) return HidResult::UnsupportedVersion;
  return HidResult::Success;
}

HidResult RefuseFormat(const Request& request, HidFormatVersion version, HIDLog& log) {
  log.Write(std::string(request.name) + " is not supported with version " + version.ToString(),
            LogLevel::Info);
  request.buffers.PutLog(log);
  return HidResult::NotSupportedWithVersion;
}

HidResult ReportFailure(const Request& request, HIDLog& log,
                        const std::exception* failure) noexcept {
  // A second failure must not replace the first.
  try {
    if (failure != nullptr) {
      log.Write(std::string("Error in ") + request.name + ": " + failure->what(), LogLevel::Error);
    } else {
      log.Write(std::string("Unexpected error in ") + request.name, LogLevel::Error);
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): the result reports the failure
  }
  request.buffers.PutLog(log);
  return failure != nullptr ? HidResult::StandardFailure : HidResult::UnexpectedFailure;
}

}  // namespace system_info
