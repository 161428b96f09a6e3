// The exported calls: requests to the manager of the running machine.

#include "api/request.h"
#include "deviceid.h"
#include "hardware/windows_os_manager.h"

namespace system_info {
namespace {

int AnswerOnThisMachine(const Request& request) noexcept {
  return static_cast<int>(Answer(request, [](const std::shared_ptr<HIDLog>& log) {
    return std::make_unique<WindowsOSManager>(log);
  }));
}

}  // namespace
}  // namespace system_info

using system_info::AnswerOnThisMachine;

int GetHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                  uint32_t logSize) {
  return AnswerOnThisMachine(
      system_info::GetRequest({deviceId, deviceIdSize, log, logSize}, version));
}

int GetHardwareIdEx(char* deviceId, uint32_t deviceIdSize, int versionCode, char* log,
                    uint32_t logSize) {
  return GetHardwareId(deviceId, deviceIdSize, system_info::VersionText(versionCode), log, logSize);
}

int GetHardwareIdMod(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                     uint32_t logSize, uint32_t flags) {
  return AnswerOnThisMachine(
      system_info::ModRequest({deviceId, deviceIdSize, log, logSize}, version, flags));
}

int RecheckHardwareId(char* deviceId, uint32_t deviceIdSize, const char* version, char* log,
                      uint32_t logSize) {
  return AnswerOnThisMachine(
      system_info::RecheckRequest({deviceId, deviceIdSize, log, logSize}, version));
}

const char* GetHIDVersion() { return DEVICEID_VERSION; }
