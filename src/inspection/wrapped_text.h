// Text for people, in lines that fit on a terminal of 80 columns.

#ifndef DEVICEID_INSPECTION_WRAPPED_TEXT_H_
#define DEVICEID_INSPECTION_WRAPPED_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace system_info {

inline constexpr std::size_t kWidth = 80;
inline constexpr std::size_t kMargin = 2;
inline constexpr std::size_t kGap = 2;
inline constexpr std::size_t kNameWidth = 7;  // Of most names of fields and parts.

// All texts here are valid UTF-8 and hold nothing that a terminal obeys.

// The bytes of the first `count` characters.
std::size_t BytesOf(std::string_view text, std::size_t count);

std::string Padded(const std::string& text, std::size_t width);

// Lines of at most `width` characters, broken at blanks where there are any.
std::vector<std::string> Wrap(std::string_view text, std::size_t width);

// Adds a line without the blanks at its end, which are for columns that follow.
void AddLine(std::string& text, std::string line);

// Adds a label, which `colour` is put before if it is not null, and text behind it.
void AddHeadline(std::string& text, const std::string& label, const char* colour,
                 std::string_view content);

// Adds a name and text behind it, in as many lines as it needs.
void AddField(std::string& text, const std::string& name, std::string_view content);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_WRAPPED_TEXT_H_
