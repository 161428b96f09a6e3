#include "inspection/wrapped_text.h"

#include "inspection/shown_text.h"

namespace system_info {

std::size_t BytesOf(std::string_view text, std::size_t count) {
  std::size_t bytes = 0;
  for (; bytes < text.size(); ++bytes) {
    if ((text[bytes] & 0xc0) != 0x80 && count-- == 0) break;
  }
  return bytes;
}

std::string Padded(const std::string& text, std::size_t width) {
  const std::size_t length = CountCharacters(text);
  return length < width ? text + std::string(width - length, ' ') : text;
}

std::vector<std::string> Wrap(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (CountCharacters(text) > width) {
    const std::size_t fitting = BytesOf(text, width);
    const std::size_t blank = text.rfind(' ', fitting);
    const bool broken = blank != std::string_view::npos && blank > 0;
    lines.emplace_back(text.substr(0, broken ? blank : fitting));
    text.remove_prefix(broken ? blank + 1 : fitting);
  }
  lines.emplace_back(text);
  return lines;
}

void AddLine(std::string& text, std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  text += line + "\n";
}

void AddHeadline(std::string& text, const std::string& label, const char* colour,
                 std::string_view content) {
  const std::size_t column = label.size() + kGap;
  std::string start = (colour != nullptr ? colour + label + "\x1b[0m" : label) + "  ";
  for (const std::string& line : Wrap(content, kWidth - column)) {
    AddLine(text, start + line);
    start.assign(column, ' ');
  }
}

void AddField(std::string& text, const std::string& name, std::string_view content) {
  const std::size_t column = kMargin + kNameWidth + kGap;
  std::string start = Padded(std::string(kMargin, ' ') + name, column);
  for (const std::string& line : Wrap(content, kWidth - column)) {
    AddLine(text, start + line);
    start.assign(column, ' ');
  }
}

}  // namespace system_info
