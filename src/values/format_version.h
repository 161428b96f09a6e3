// The version of an identifier format, and the list of the formats that a host may ask for.
//
// A HidFormatVersion is a plain value. Its range is wider than the list: thresholds such as 1.3 and
// the versions in stored records are values of the same type.

#ifndef DEVICEID_VALUES_FORMAT_VERSION_H_
#define DEVICEID_VALUES_FORMAT_VERSION_H_

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace system_info {

struct HidFormatVersion {
  // Version 1.0.
  constexpr HidFormatVersion() = default;

  constexpr HidFormatVersion(std::uint32_t major_number, std::uint32_t minor_number)
      : major(major_number), minor(minor_number) {}

  // Parses two decimal numbers that are separated by points or white space. A text without exactly
  // two words gives 1.0. A number may have a sign, ends at the first character that is not a digit,
  // and is stored as its 32-bit pattern.
  //
  // Throws std::invalid_argument if a word does not begin with a number and std::out_of_range if
  // the number does not fit in 32 signed bits.
  explicit HidFormatVersion(std::string_view text);

  // "2.0"
  std::string ToString() const;

  // `major` decides, then `minor`, both as unsigned numbers.
  friend constexpr auto operator<=>(const HidFormatVersion&, const HidFormatVersion&) = default;

  std::uint32_t major = 1;
  std::uint32_t minor = 0;
};

inline constexpr std::array<const char*, 7> SupportedVersions = {"1.0", "1.1", "1.2", "1.4",
                                                                 "1.5", "1.6", "2.0"};

// True if `text` is, byte for byte, an entry of SupportedVersions.
bool IsSupportedVersion(std::string_view text);

// A supported version as a number: ten times what its text says.
using HidVersionCode = int;

// The entry of SupportedVersions with this code, or null if there is none.
const char* VersionText(HidVersionCode code);

}  // namespace system_info

#endif  // DEVICEID_VALUES_FORMAT_VERSION_H_
