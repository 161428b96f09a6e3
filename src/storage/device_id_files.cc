#include "storage/device_id_files.h"

#include "values/device_id.h"

namespace system_info {
namespace {

enum class Source { kCommon, kUser, kNone };

void MoveToCommonFolder(OSManager& manager, HIDLog& log, const std::string& id,
                        const HidFormatVersion& version) {
  if (manager.WriteCommonDeviceId(id, version)) {
    manager.DeleteUserDeviceId(version);
  } else {
    log.Write("Unable to write in common dir", LogLevel::Error);
  }
}

Source ReadEitherCopy(OSManager& manager, HIDLog& log, std::string& id,
                      const HidFormatVersion& version) {
  if (manager.ReadCommonDeviceId(id, version) && !id.empty()) {
    log.Write("HID was loaded from common file: " + id, LogLevel::Info);
    return Source::kCommon;
  }
  if (manager.ReadUserDeviceId(id, version) && !id.empty()) {
    log.Write("HID was loaded from user file: " + id, LogLevel::Info);
    MoveToCommonFolder(manager, log, id, version);
    return Source::kUser;
  }
  log.Write("Can not load HID from common and user directory", LogLevel::Info);
  return Source::kNone;
}

}  // namespace

bool LoadDeviceId(OSManager& manager, HIDLog& log, std::string& id,
                  const HidFormatVersion& version) {
  const Source source = ReadEitherCopy(manager, log, id, version);
  if (!IsValidDeviceId(id)) {
    log.Write("Device id version " + version.ToString() + " is incorrect.", LogLevel::Info);
    return false;
  }
  // Only after the common text has proved to be an id: the user copy may be the last good one.
  if (source == Source::kCommon) manager.DeleteUserDeviceId(version);
  return source != Source::kNone;
}

void SaveDeviceId(OSManager& manager, HIDLog& log, const std::string& id,
                  const HidFormatVersion& version) {
  if (manager.WriteCommonDeviceId(id, version)) {
    manager.DeleteUserDeviceId(version);
    return;
  }
  log.Write("Unable to write in common dir", LogLevel::Error);
  if (!manager.WriteUserDeviceId(id, version)) {
    log.Write("Unable to write in user dir", LogLevel::Error);
  }
}

}  // namespace system_info
