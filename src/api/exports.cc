// The exported calls: the checks of their arguments, the frame around every request, and the
// conversion of every failure into a result and a log line.

#include "deviceid.h"

#include <array>
#include <exception>
#include <memory>
#include <string>

#include "api/format_version.h"
#include "hardware/windows_os_manager.h"
#include "identity/hid_result.h"
#include "identity/legacy_resolution.h"
#include "identity/resolution.h"
#include "storage/folder_migration.h"
#include "support/call_log.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFirstWithRecord(2, 0);

constexpr std::uint32_t kNoFlags = 0;

// The arguments that all requests have in common.
struct Request {
  char* device_id;
  std::uint32_t device_id_size;
  const char* version;
  char* log;
  std::uint32_t log_size;
};

HidResult CheckArguments(const Request& request) {
  if (request.device_id == nullptr) return HidResult::NoDeviceIdBuffer;
  if (request.version == nullptr || *request.version == '\0') return HidResult::NoVersion;
  if (!IsSupportedVersion(request.version)) return HidResult::UnsupportedVersion;
  return HidResult::Success;
}

// The last steps of a handler, where a second failure must not take the place of the first.
template <typename... Texts>
HidResult Report(HIDLog& log, const Request& request, HidResult result, Texts... texts) noexcept {
  try {
    log.Write((std::string() + ... + texts), LogLevel::Error);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the result tells of the failure all the same
  }
  log.CopyTo(request.log, request.log_size);
  return result;
}

// The part of a request whose failures end up in the log. `resolve` is given the manager.
template <typename Resolve>
HidResult RunLogged(const char* name, const Request& request, const std::shared_ptr<HIDLog>& log,
                    Resolve resolve) {
  try {
    log->Write(std::string("Execute ") + name + ", version " + request.version, LogLevel::Debug);
    MigrateDeviceIdFolders(log);
    const std::unique_ptr<OSManager> manager = std::make_unique<WindowsOSManager>(log);
    return resolve(manager);
  } catch (const std::exception& failure) {
    return Report(*log, request, HidResult::StandardFailure, "Error in ", name, ": ",
                  failure.what());
  } catch (...) {
    return Report(*log, request, HidResult::UnexpectedFailure, "Unexpected error in ", name);
  }
}

// All of a request. `serve` is given the version and the log of a request whose arguments are good.
// What fails before there is a log gives the same results as later on, and leaves the buffers
// alone.
template <typename Serve>
int Answer(const Request& request, Serve serve) noexcept {
  HidResult result = CheckArguments(request);
  if (result != HidResult::Success) return static_cast<int>(result);
  try {
    const HidFormatVersion version(request.version);
    const auto log = std::make_shared<HIDLog>();
    if (request.log == nullptr) log->Disable();
    result = serve(version, log);
  } catch (const std::exception&) {
    result = HidResult::StandardFailure;
  } catch (...) {
    result = HidResult::UnexpectedFailure;
  }
  return static_cast<int>(result);
}

HidResult Resolve(const std::unique_ptr<OSManager>& manager, const std::shared_ptr<HIDLog>& log,
                  const Request& request, std::uint32_t flags) {
  return ResolveDeviceId(manager, log, request.device_id, request.device_id_size, request.log,
                         request.log_size, flags);
}

int AnswerInAnyFormat(const Request& request) noexcept {
  return Answer(request, [&](HidFormatVersion version, const std::shared_ptr<HIDLog>& log) {
    return RunLogged("GetHardwareId", request, log, [&](const std::unique_ptr<OSManager>& manager) {
      if (version >= kFirstWithRecord) return Resolve(manager, log, request, kNoFlags);
      return ResolveLegacyDeviceId(manager, log, version, request.device_id, request.device_id_size,
                                   request.log, request.log_size);
    });
  });
}

// A request that exists for formats with a record only.
int AnswerWithRecord(const char* name, const Request& request, std::uint32_t flags) noexcept {
  return Answer(request, [&](HidFormatVersion version, const std::shared_ptr<HIDLog>& log) {
    if (version < kFirstWithRecord) {
      log->Write(std::string(name) + " is not supported with version " + version.ToString(),
                 LogLevel::Info);
      log->CopyTo(request.log, request.log_size);
      return HidResult::NotSupportedWithVersion;
    }
    return RunLogged(name, request, log, [&](const std::unique_ptr<OSManager>& manager) {
      return Resolve(manager, log, request, flags);
    });
  });
}

struct VersionCode {
  int code;
  const char* text;
};

constexpr std::array<VersionCode, 7> kVersionCodes = {{
    {10, "1.0"},
    {11, "1.1"},
    {12, "1.2"},
    {14, "1.4"},
    {15, "1.5"},
    {16, "1.6"},
    {20, "2.0"},
}};

// Null for a code without a text.
const char* VersionText(int code) {
  for (const VersionCode& row : kVersionCodes) {
    if (row.code == code) return row.text;
  }
  return nullptr;
}

}  // namespace
}  // namespace system_info

int GetHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                  uint32_t logSize) {
  return system_info::AnswerInAnyFormat({deviceId, deviceIdSize, version, log, logSize});
}

int GetHardwareIdEx(char* deviceId, uint32_t deviceIdSize, int versionCode, char* log,
                    uint32_t logSize) {
  return GetHardwareId(deviceId, deviceIdSize, system_info::VersionText(versionCode), log, logSize);
}

int GetHardwareIdMod(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                     uint32_t logSize, uint32_t flags) {
  return system_info::AnswerWithRecord("GetHardwareIdEmulated",
                                       {deviceId, deviceIdSize, version, log, logSize}, flags);
}

int RecheckHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                      uint32_t logSize) {
  return system_info::AnswerWithRecord("RecheckHardwareId",
                                       {deviceId, deviceIdSize, version, log, logSize},
                                       system_info::SkipDateCheck);
}

const char* GetHIDVersion() { return DEVICEID_VERSION; }
