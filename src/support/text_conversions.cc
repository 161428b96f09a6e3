#include "support/text_conversions.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cwchar>

#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr std::size_t kMaxLength = 4096;

// The conversion checks its limit only before a character, so one may extend beyond the limit.
constexpr std::size_t kSpare = MB_LEN_MAX;

// A conversion that fills the buffer leaves no terminator in it.
template <typename Char, std::size_t kSize>
std::basic_string<Char> UpToZero(const std::array<Char, kSize>& buffer) {
  return {buffer.begin(), std::find(buffer.begin(), buffer.end(), Char{})};
}

}  // namespace

// In both functions the name of the conversion is in parentheses, which prevents argument-dependent
// lookup: a conversion of the platform layer takes precedence.

std::string ToNarrow(const std::wstring& source) {
  if (source.size() >= kMaxLength) return {};
  std::string text;
  // A character that does not fit is dropped whole: the limit is lowered until the character is
  // left out.
  std::size_t limit = kMaxLength;
  do {
    std::array<char, kMaxLength + kSpare> buffer = {};
    std::mbstate_t state = {};
    const wchar_t* rest = source.c_str();
    (wcsrtombs)(buffer.data(), &rest, limit, &state);
    text = UpToZero(buffer);
    --limit;
  } while (text.size() > kMaxLength);
  return text;
}

std::wstring ToWide(const std::string& source) {
  if (source.size() >= kMaxLength) return {};
  std::array<wchar_t, kMaxLength> buffer = {};
  std::mbstate_t state = {};
  const char* rest = source.c_str();
  (mbsrtowcs)(buffer.data(), &rest, buffer.size(), &state);
  return UpToZero(buffer);
}

}  // namespace system_info
