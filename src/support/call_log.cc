#include "support/call_log.h"

#include <array>
#include <cstring>

#include "support/clock.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

constexpr std::array<const char*, 3> kLevelTexts = {"[Info]", "[Debug]", "[Error]"};

constexpr std::size_t kTimeWidth = 15;
constexpr std::size_t kLevelWidth = 7;

void AppendLeftJustified(std::string& line, std::string_view text, std::size_t width) {
  line += text;
  if (text.size() < width) line.append(width - text.size(), ' ');
}

void AppendZeroPadded(std::string& line, std::int64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  if (digits.size() < width) line.append(width - digits.size(), '0');
  line += digits;
}

}  // namespace

void HIDLog::Write(std::string_view message, LogLevel level) {
  if (!enabled_) return;
  std::string line;
  AppendLeftJustified(line, LogTimestamp(), kTimeWidth);
  AppendLeftJustified(line, LevelText(level), kLevelWidth);
  line += ' ';
  line += message;
  line += '\n';
  text_ += line;
}

void HIDLog::WriteWide(const std::wstring& message, LogLevel level) {
  if (!enabled_) return;
  Write(ToNarrow(message), level);
}

void HIDLog::CopyTo(char* buffer, std::uint32_t size) const {
  if (buffer == nullptr) return;
  CopyToBuffer(text_, buffer, size);
}

const char* LevelText(LogLevel level) { return kLevelTexts[static_cast<std::size_t>(level)]; }

std::string LogTimestamp() {
  const std::int64_t ticks = PresentTicks();
  const std::int64_t seconds = ticks / kTicksPerSecond;
  const std::int64_t milliseconds = (ticks - seconds * kTicksPerSecond) / (kTicksPerSecond / 1000);
  const TimeOfDay local = LocalTimeOfDay(seconds);

  std::string text = "[";
  AppendZeroPadded(text, local.hour, 2);
  text += ':';
  AppendZeroPadded(text, local.minute, 2);
  text += ':';
  AppendZeroPadded(text, local.second, 2);
  text += ':';
  AppendZeroPadded(text, milliseconds, 3);
  text += ']';
  return text;
}

std::int32_t CopyToBuffer(std::string_view source, char* destination, std::uint32_t size) {
  source = source.substr(0, source.find('\0'));
  if (source.size() < size) {
    std::memcpy(destination, source.data(), source.size());
    destination[source.size()] = '\0';
    return 0;
  }
  if (size == 0) return 1;
  std::memcpy(destination, source.data(), size - 1);
  destination[size - 1] = '\0';
  return 1;
}

}  // namespace system_info
