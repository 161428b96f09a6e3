#include "identity/legacy_resolution.h"

#include <string>

#include "identity/device_id.h"
#include "identity/random_identity.h"
#include "storage/device_id_files.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFirstStoredFormat(1, 6);

// One machine gives formats 1.5, 1.6 and 2.0 the same hardware string.
constexpr HidFormatVersion kHardwareOfStoredFormat(1, 5);

}  // namespace

HidResult ResolveLegacyDeviceId(const std::unique_ptr<OSManager>& manager,
                                const std::shared_ptr<HIDLog>& log, HidFormatVersion version,
                                char* device_id, std::uint32_t device_id_size, char* log_buffer,
                                std::uint32_t log_size) {
  const bool stored = version >= kFirstStoredFormat;
  DeviceId id;
  if (stored && LoadDeviceId(manager, log, id, version)) {
    const int copied = CopyToBuffer(id, device_id, device_id_size);
    log->CopyTo(log_buffer, log_size);
    return static_cast<HidResult>(copied);
  }

  std::string hardware = manager->GetHardwareIdString(stored ? kHardwareOfStoredFormat : version);
  if (!hardware.empty()) {
    log->Write("IDs are received.", LogLevel::Debug);
  } else {
    log->Write("Failed to get any of all the hardware IDs. Will generate a random UUID",
               LogLevel::Debug);
    hardware = MakeRandomHardwareString();
  }

  id = MakeDeviceId(hardware, version);
  log->Write("Received HID: " + id, LogLevel::Debug);
  const int copied = CopyToBuffer(id, device_id, device_id_size);
  if (stored) SaveDeviceId(manager, log, id, version);
  log->CopyTo(log_buffer, log_size);
  return static_cast<HidResult>(copied);
}

}  // namespace system_info
