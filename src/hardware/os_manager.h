// The only access of the identity logic to the operating system.
//
// It reads the hardware of the running machine and accesses the device id files. A manager belongs
// to one exported call and is used by that call's thread only. It caches nothing.

#ifndef DEVICEID_HARDWARE_OS_MANAGER_H_
#define DEVICEID_HARDWARE_OS_MANAGER_H_

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/call_log.h"
#include "values/format_version.h"

namespace system_info {

// The hardware values of one run, joined with nothing between them. Empty if there is none.
using HardwareIdString = std::string;

// The hardware values of one run, one by one, at most four, without those that are empty or exactly
// "0". Absent if COM or WMI fails, which is not the same as present and empty.
using HardwareIdSet = std::optional<std::vector<std::string>>;

class OSManager : public EnableLogging<HIDLog> {
 public:
  OSManager(const OSManager&) = delete;
  OSManager& operator=(const OSManager&) = delete;

  virtual HardwareIdString GetHardwareIdString(const HidFormatVersion& version) = 0;

  // The reads return true and replace `id` if the copy holds any text. On false `id` is untouched.
  virtual bool ReadCommonDeviceId(std::string& id, const HidFormatVersion& version) = 0;
  virtual bool ReadUserDeviceId(std::string& id, const HidFormatVersion& version) = 0;

  // The writes replace the copy by `id` and return true if all of it was written. On false there
  // may be no copy left, or a truncated one.
  virtual bool WriteCommonDeviceId(const std::string& id, const HidFormatVersion& version) = 0;
  virtual bool WriteUserDeviceId(const std::string& id, const HidFormatVersion& version) = 0;

  virtual void DeleteUserDeviceId(const HidFormatVersion& version) = 0;

  virtual HardwareIdSet GetHardwareIdList(const HidFormatVersion& version) = 0;

  virtual ~OSManager() = default;

 protected:
  explicit OSManager(std::shared_ptr<HIDLog> log) : EnableLogging(std::move(log)) {}
};

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_OS_MANAGER_H_
