#include "inspection/saved_log.h"

#include <algorithm>
#include <cstddef>

#include "inspection/log_entries.h"
#include "inspection/shown_text.h"
#include "values/device_id.h"

namespace system_info {
namespace {

bool BeginsCall(std::string_view text) {
  const auto entries = ParseLog(text.substr(0, text.find_first_of("\r\n")));
  return !entries.empty() && entries[0].message.starts_with("Execute ");
}

// A log in the host's buffer ends with a zero byte. What stands behind it belongs to an earlier
// call, unless the host has put a whole log there.
std::string WithoutLeftovers(std::string_view text) {
  std::string kept(text.substr(0, text.find('\0')));
  text.remove_prefix(kept.size());
  while (!text.empty()) {
    text.remove_prefix(1);
    const std::string_view piece = text.substr(0, text.find('\0'));
    if (BeginsCall(piece)) {
      if (!kept.ends_with('\n')) kept += '\n';
      kept += piece;
    }
    text.remove_prefix(piece.size());
  }
  return kept;
}

// Only if the first line ends so: a message can hold such a line end, too.
std::string WithLineFeeds(std::string_view text, std::string_view line_end) {
  const std::size_t first = std::min(text.find_first_of("\r\n"), text.size());
  if (!text.substr(first).starts_with(line_end)) return std::string(text);
  std::string lines;
  while (true) {
    const std::size_t end = text.find(line_end);
    lines += text.substr(0, end);
    if (end == std::string_view::npos) return lines;
    lines += '\n';
    text.remove_prefix(end + line_end.size());
  }
}

// Who sends both outputs of the program to one place has the id, or a complaint, behind the log.
std::string WithoutOutput(std::string log) {
  while (log.ends_with('\n')) {
    const std::size_t start = log.rfind('\n', log.size() - 2) + 1;
    const std::string line = log.substr(start, log.size() - start - 1);
    if (!IsValidDeviceId(line) && !line.starts_with("deviceid: ")) break;
    log.erase(start);
  }
  return log;
}

}  // namespace

std::string RestoreLog(std::string_view bytes) {
  const std::string text = FromUtf16(bytes).value_or(std::string(WithoutByteOrderMark(bytes)));
  const std::string log = WithLineFeeds(WithoutLeftovers(text), "\r\n");
  return WithoutOutput(log.find('\n') == std::string::npos ? WithLineFeeds(log, "\r") : log);
}

}  // namespace system_info
