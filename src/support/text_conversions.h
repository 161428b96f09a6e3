// The only conversions between narrow and wide text.
//
// They follow the locale of the process, which the library never sets. In the default locale the
// mapping is one to one up to 255. Neither reports a failure: the result ends before the first
// character that cannot be converted, and is empty for a source of 4096 elements or more.
// Truncation here changes ids, so the limits are part of the formats.

#ifndef DEVICEID_SUPPORT_TEXT_CONVERSIONS_H_
#define DEVICEID_SUPPORT_TEXT_CONVERSIONS_H_

#include <string>

namespace system_info {

// Converts up to the first zero of `source`. In a multibyte locale the result ends with, or before,
// the character that takes it beyond 4096 bytes.
std::string ToNarrow(const std::wstring& source);

// Converts up to the first zero of `source`.
std::wstring ToWide(const std::string& source);

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_TEXT_CONVERSIONS_H_
