#include "identity/legacy_resolution.h"

#include <string>

#include "identity/random_identity.h"
#include "storage/device_id_files.h"
#include "values/device_id.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFirstStoredFormat(1, 6);

// One machine gives formats 1.5, 1.6 and 2.0 the same hardware string.
constexpr HidFormatVersion kHardwareOfStoredFormat(1, 5);

}  // namespace

HidResult ResolveLegacyDeviceId(OSManager& manager, HIDLog& log, HidFormatVersion version,
                                const HostBuffers& buffers) {
  const bool stored = version >= kFirstStoredFormat;
  DeviceId id;
  if (stored && LoadDeviceId(manager, log, id, version)) {
    const HidResult result = buffers.PutId(id);
    buffers.PutLog(log);
    return result;
  }

  std::string hardware = manager.GetHardwareIdString(stored ? kHardwareOfStoredFormat : version);
  if (!hardware.empty()) {
    log.Write("IDs are received.", LogLevel::Debug);
  } else {
    log.Write("Failed to get any of all the hardware IDs. Will generate a random UUID",
              LogLevel::Debug);
    hardware = MakeRandomHardwareString();
  }

  id = MakeDeviceId(hardware, version);
  log.Write("Received HID: " + id, LogLevel::Debug);
  const HidResult result = buffers.PutId(id);
  if (stored) SaveDeviceId(manager, log, id, version);
  buffers.PutLog(log);
  return result;
}

}  // namespace system_info
