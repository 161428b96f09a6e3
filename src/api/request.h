// The frame around every request: the checks of its arguments, its log, and the conversion of every
// failure into a result and a log line.
//
// The exported calls are requests to the manager of the running machine. A dry run goes through the
// same frame with a manager of its own.

#ifndef DEVICEID_API_REQUEST_H_
#define DEVICEID_API_REQUEST_H_

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "hardware/os_manager.h"
#include "identity/legacy_resolution.h"
#include "identity/resolution.h"
#include "storage/folder_migration.h"
#include "support/call_log.h"
#include "values/format_version.h"
#include "values/hid_result.h"
#include "values/host_buffers.h"
#include "values/resolution_flags.h"

namespace system_info {

inline constexpr HidFormatVersion kFirstWithRecord(2, 0);

struct Request {
  const char* name;  // Name of the call in the log.
  HidFormatVersion oldest_format;
  HostBuffers buffers;
  const char* version;  // May be null.
  std::uint32_t flags = kNoFlags;
};

inline Request GetRequest(const HostBuffers& buffers, const char* version) {
  return {"GetHardwareId", HidFormatVersion(1, 0), buffers, version};
}

inline Request RecheckRequest(const HostBuffers& buffers, const char* version) {
  return {"RecheckHardwareId", kFirstWithRecord, buffers, version, SkipDateCheck};
}

inline Request ModRequest(const HostBuffers& buffers, const char* version, std::uint32_t flags) {
  return {"GetHardwareIdEmulated", kFirstWithRecord, buffers, version, flags};
}

HidResult CheckArguments(const Request& request);

// The result for a format below those of the request.
HidResult RefuseFormat(const Request& request, HidFormatVersion version, HIDLog& log);

// The last steps of a handler: the log line and the result. `failure` is null if the exception is
// not a standard one.
HidResult ReportFailure(const Request& request, HIDLog& log,
                        const std::exception* failure) noexcept;

template <typename MakeManager>
HidResult Resolve(const Request& request, HidFormatVersion version,
                  const std::shared_ptr<HIDLog>& log, MakeManager make_manager) {
  log->Write(std::string("Execute ") + request.name + ", version " + request.version,
             LogLevel::Debug);
  MigrateDeviceIdFolders(*log);
  const std::unique_ptr<OSManager> manager = make_manager(log);
  return version >= kFirstWithRecord
             ? ResolveDeviceId(*manager, *log, request.buffers, request.flags)
             : ResolveLegacyDeviceId(*manager, *log, version, request.buffers);
}

// The part of a request whose failures end up in the log.
template <typename MakeManager>
HidResult ResolveLogged(const Request& request, HidFormatVersion version,
                        const std::shared_ptr<HIDLog>& log, MakeManager make_manager) {
  try {
    return Resolve(request, version, log, make_manager);
  } catch (const std::exception& failure) {
    return ReportFailure(request, *log, &failure);
  } catch (...) {
    return ReportFailure(request, *log, nullptr);
  }
}

// Answers a request. `make_manager` takes the shared log of the call and returns the owning pointer
// of an OSManager. A failure before there is a log gives the same results as a later one, and
// leaves the buffers alone.
template <typename MakeManager>
HidResult Answer(const Request& request, MakeManager make_manager) noexcept {
  const HidResult checked = CheckArguments(request);
  if (checked != HidResult::Success) return checked;
  try {
    const HidFormatVersion version(request.version);
    const auto log = std::make_shared<HIDLog>();
    if (request.buffers.log == nullptr) log->Disable();
    if (version < request.oldest_format) return RefuseFormat(request, version, *log);
    return ResolveLogged(request, version, log, make_manager);
  } catch (const std::exception&) {
    return HidResult::StandardFailure;
  } catch (...) {
    return HidResult::UnexpectedFailure;
  }
}

}  // namespace system_info

#endif  // DEVICEID_API_REQUEST_H_
