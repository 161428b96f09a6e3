// Text from files, machines and logs, brought from the encoding that it is in to one that can be
// shown.

#ifndef DEVICEID_INSPECTION_SHOWN_TEXT_H_
#define DEVICEID_INSPECTION_SHOWN_TEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace system_info {

// Valid UTF-8: what is UTF-8 in `bytes` stays, each other byte is a character of Latin-1.
std::string ToUtf8(std::string_view bytes);

// The same without anything that a terminal would obey: control characters stand as "\x1b".
std::string Harmless(std::string_view bytes);

// How many characters `utf8`, which is valid, has.
std::size_t CountCharacters(std::string_view utf8);

// The text of `bytes` if they are UTF-16 of either byte order, with a byte order mark or without.
// Characters up to 255 become single bytes, as the library writes them, others UTF-8.
std::optional<std::string> FromUtf16(std::string_view bytes);

// `bytes` without the byte order mark of UTF-8.
std::string_view WithoutByteOrderMark(std::string_view bytes);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_SHOWN_TEXT_H_
