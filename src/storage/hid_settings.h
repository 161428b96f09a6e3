// The record beside the device id: which id was stored, whether it is random, when the record was
// last written, and the hardware ids of the id.
//
// The file "hid_settings" lies in the common folder or, failing that, in the user folder. All its
// integers are little-endian, and strings follow their 4-byte length, without a terminator:
//
//   version text, device id, hid type (4 bytes), date (8 bytes), count (4 bytes), hardware ids
//
// There is no lock and no atomic replace. The reader survives a short file and removes it.

#ifndef DEVICEID_STORAGE_HID_SETTINGS_H_
#define DEVICEID_STORAGE_HID_SETTINGS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "values/format_version.h"

namespace system_info {

// The origin of a device id. A stored value may be any other number and then counts as Generated.
enum class HidType : std::int32_t { Generated = 0, Random = 1 };

struct HidSettings {
  // Sets the date to the present time.
  HidSettings(HidFormatVersion format, HidType type, std::string id, std::vector<std::string> ids);

  HidFormatVersion version;
  std::string device_id;
  HidType hid_type;
  std::int64_t last_write_date;  // Seconds since 1 January 1970 UTC.
  std::vector<std::string> hardware_ids;
};

// The record of the common folder, else that of the user folder. A file that ends early or has more
// than 256 hardware ids is removed and counts as missing. Throws, and leaves the file, if the
// version text is not a version or a length cannot be allocated.
std::optional<HidSettings> LoadHidSettings();

// Stores the record with the present time as its date, in the user folder if writing to the common
// one fails. False if both fail, or if it has more than 256 hardware ids, which no reader would
// accept; the stored record is then left alone.
bool SaveHidSettings(const HidSettings& settings);

// The same for one folder each.
std::optional<HidSettings> ReadHidSettingsFile(const std::string& folder);
bool WriteHidSettingsFile(const HidSettings& settings, const std::string& folder);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_HID_SETTINGS_H_
