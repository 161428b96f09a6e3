// The exported calls: the checks of their arguments, the frame around every request, and the
// conversion of every failure into a result and a log line.

#include "deviceid.h"

#include <exception>
#include <memory>
#include <string>

#include "hardware/windows_os_manager.h"
#include "identity/legacy_resolution.h"
#include "identity/resolution.h"
#include "storage/folder_migration.h"
#include "support/call_log.h"
#include "values/format_version.h"
#include "values/hid_result.h"
#include "values/host_buffers.h"
#include "values/resolution_flags.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFirstWithRecord(2, 0);

struct Request {
  const char* name;  // As the log calls it.
  HidFormatVersion oldest_format;
  HostBuffers buffers;
  const char* version;
  std::uint32_t flags = kNoFlags;
};

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

// The last steps of a handler, where a second failure must not take the place of the first.
template <typename... Texts>
HidResult Report(const Request& request, HIDLog& log, HidResult result, Texts... texts) noexcept {
  try {
    log.Write((std::string() + ... + texts), LogLevel::Error);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the result tells of the failure all the same
  }
  request.buffers.PutLog(log);
  return result;
}

HidResult Resolve(const Request& request, HidFormatVersion version,
                  const std::shared_ptr<HIDLog>& log) {
  log->Write(std::string("Execute ") + request.name + ", version " + request.version,
             LogLevel::Debug);
  MigrateDeviceIdFolders(*log);
  const std::unique_ptr<OSManager> manager = std::make_unique<WindowsOSManager>(log);
  return version >= kFirstWithRecord
             ? ResolveDeviceId(*manager, *log, request.buffers, request.flags)
             : ResolveLegacyDeviceId(*manager, *log, version, request.buffers);
}

// The part of a request whose failures end up in the log.
HidResult ResolveLogged(const Request& request, HidFormatVersion version,
                        const std::shared_ptr<HIDLog>& log) {
  try {
    return Resolve(request, version, log);
  } catch (const std::exception& failure) {
    return Report(request, *log, HidResult::StandardFailure, "Error in ", request.name, ": ",
                  failure.what());
  } catch (...) {
    return Report(request, *log, HidResult::UnexpectedFailure, "Unexpected error in ",
                  request.name);
  }
}

// What fails before there is a log gives the same results as later on, and leaves the buffers
// alone.
HidResult Answer(const Request& request) noexcept {
  const HidResult checked = CheckArguments(request);
  if (checked != HidResult::Success) return checked;
  try {
    const HidFormatVersion version(request.version);
    const auto log = std::make_shared<HIDLog>();
    if (request.buffers.log == nullptr) log->Disable();
    if (version < request.oldest_format) return RefuseFormat(request, version, *log);
    return ResolveLogged(request, version, log);
  } catch (const std::exception&) {
    return HidResult::StandardFailure;
  } catch (...) {
    return HidResult::UnexpectedFailure;
  }
}

}  // namespace
}  // namespace system_info

using system_info::Answer;
using system_info::HidFormatVersion;
using system_info::kFirstWithRecord;

int GetHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                  uint32_t logSize) {
  return static_cast<int>(Answer(
      {"GetHardwareId", HidFormatVersion(1, 0), {deviceId, deviceIdSize, log, logSize}, version}));
}

int GetHardwareIdEx(char* deviceId, uint32_t deviceIdSize, int versionCode, char* log,
                    uint32_t logSize) {
  return GetHardwareId(deviceId, deviceIdSize, system_info::VersionText(versionCode), log, logSize);
}

int GetHardwareIdMod(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                     uint32_t logSize, uint32_t flags) {
  return static_cast<int>(Answer({"GetHardwareIdEmulated",
                                  kFirstWithRecord,
                                  {deviceId, deviceIdSize, log, logSize},
                                  version,
                                  flags}));
}

int RecheckHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                      uint32_t logSize) {
  return static_cast<int>(Answer({"RecheckHardwareId",
                                  kFirstWithRecord,
                                  {deviceId, deviceIdSize, log, logSize},
                                  version,
                                  system_info::SkipDateCheck}));
}

const char* GetHIDVersion() { return DEVICEID_VERSION; }
