#include "hardware/hardware_value_filter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <string_view>

namespace system_info {
namespace {

// Placeholders, in lower case. No other text is ever dropped.
constexpr std::array<std::wstring_view, 3> kPlaceholders = {
    L"00000000-0000-0000-0000-000000000000",
    L"ffffffff-ffff-ffff-ffff-ffffffffffff",
    L"to be filled by o.e.m.",
};

// Values are texts of 16-bit characters also where wchar_t is wider. tolower is defined for one
// byte only, and a character beyond that has no other case in any locale it knows.
wchar_t FoldCharacter(wchar_t character) {
  const auto unit = static_cast<std::uint16_t>(static_cast<std::uint32_t>(character));
  if (unit > 0xff) return static_cast<wchar_t>(unit);
  return static_cast<wchar_t>(static_cast<std::uint16_t>(std::tolower(unit)));
}

}  // namespace

std::wstring FilterHardwareValue(BSTR value, bool filter_value) {
  std::wstring text(value, SysStringLen(value));
  std::transform(text.begin(), text.end(), text.begin(), FoldCharacter);
  if (!filter_value) return text;
  const bool placeholder =
      std::find(kPlaceholders.begin(), kPlaceholders.end(), text) != kPlaceholders.end();
  return placeholder ? std::wstring() : text;
}

}  // namespace system_info
