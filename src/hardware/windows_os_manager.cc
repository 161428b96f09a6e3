#include "hardware/windows_os_manager.h"

#include "hardware/com_resources.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

bool EnteredCom(const ComInitGuard& com, HIDLog& log) {
  if (com.usable()) return true;
  log.Write("Fail to initialize COM with error: " + std::to_string(com.code()), LogLevel::Error);
  return false;
}

}  // namespace

HardwareIdString WindowsOSManager::GetHardwareIdString(const HidFormatVersion& version) {
  log_->Write("We are getting the information about the hardware in the Windows environment",
              LogLevel::Debug);
  const ComInitGuard com;
  if (!EnteredCom(com, *log_)) return {};
  return ToNarrow(GetWmiProperties(version));
}

HardwareIdSet WindowsOSManager::GetHardwareIdList(const HidFormatVersion& version) {
  log_->Write("We are getting the information about the hardware in the Windows environment",
              LogLevel::Debug);
  const ComInitGuard com;
  if (!EnteredCom(com, *log_)) return std::nullopt;
  const auto values = GetWmiPropertiesList(version);
  if (!values) return std::nullopt;

  std::vector<std::string> ids;
  for (const std::wstring& value : *values) {
    if (value.empty() || value == L"0") continue;
    ids.push_back(ToNarrow(value));
  }
  return ids;
}

}  // namespace system_info
