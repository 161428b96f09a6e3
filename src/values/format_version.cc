#include "values/format_version.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace system_info {
namespace {

// The point separates like a blank. The rest is the white space of the classic locale, so that a
// locale set by the host cannot change how a version is read.
constexpr std::string_view kSeparators = ". \t\n\v\f\r";

std::vector<std::string_view> SplitWords(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t begin = text.find_first_not_of(kSeparators);
  while (begin != std::string_view::npos) {
    const std::size_t end = text.find_first_of(kSeparators, begin);
    words.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(kSeparators, end);
  }
  return words;
}

// Hosts see these texts in the log. They are fixed here because standard libraries word the
// failures of their conversions differently.
std::uint32_t ParseNumber(std::string_view word) {
  const bool negative = word.front() == '-';
  if (negative || word.front() == '+') word.remove_prefix(1);

  const std::string_view digits = word.substr(0, word.find_first_not_of("0123456789"));
  if (digits.empty()) throw std::invalid_argument("invalid stoi argument");

  const std::int64_t limit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + negative;
  std::int64_t value = 0;
  for (const char digit : digits) {
    value = value * 10 + (digit - '0');
    if (value > limit) throw std::out_of_range("stoi argument out of range");
  }
  return static_cast<std::uint32_t>(negative ? -value : value);
}

// The code of a text of the form "2.0".
constexpr HidVersionCode CodeOf(std::string_view text) {
  return (text[0] - '0') * 10 + (text[2] - '0');
}

}  // namespace

HidFormatVersion::HidFormatVersion(std::string_view text) {
  const std::vector<std::string_view> words = SplitWords(text);
  if (words.size() != 2) return;
  major = ParseNumber(words[0]);
  minor = ParseNumber(words[1]);
}

std::string HidFormatVersion::ToString() const {
  return std::to_string(major) + "." + std::to_string(minor);
}

bool IsSupportedVersion(std::string_view text) {
  return std::any_of(SupportedVersions.begin(), SupportedVersions.end(),
                     [text](const char* supported) { return text == supported; });
}

const char* VersionText(HidVersionCode code) {
  const auto* const found =
      std::find_if(SupportedVersions.begin(), SupportedVersions.end(),
                   [code](const char* supported) { return CodeOf(supported) == code; });
  return found == SupportedVersions.end() ? nullptr : *found;
}

}  // namespace system_info
