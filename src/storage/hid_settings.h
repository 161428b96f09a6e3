// The record beside the device id: which id was stored, how it came to be, when the record was last
// written, and the hardware ids that belong to the id.
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

// How a device id came to be. A stored value may be any other number and then counts as Generated.
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
// than 256 hardware ids is removed and gives none. Throws if the version text is no version or a
// length cannot be met; the file stays then.
std::optional<HidSettings> LoadHidSettings();

// Stores the record, in the user folder if the common one refuses it, with the present time as its
// date. False if neither took it, or if it has more than 256 hardware ids, which no reader would
// accept; what is stored is then left alone.
bool SaveHidSettings(const HidSettings& settings);

// The same for one folder each.
std::optional<HidSettings> ReadHidSettingsFile(const std::string& folder);
bool WriteHidSettingsFile(const HidSettings& settings, const std::string& folder);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_HID_SETTINGS_H_
