#include "inspection/log_entries.h"

#include <algorithm>
#include <cstddef>

namespace system_info {
namespace {

constexpr std::size_t kTimeStart = 1;
constexpr std::size_t kTimeLength = 12;
constexpr std::size_t kHeaderLength = 23;

struct Header {
  std::string_view level;
  std::string_view pattern;  // '0' stands for any digit
};

constexpr Header kHeaders[] = {
    {"Info", "[00:00:00:000] [Info]  "},
    {"Debug", "[00:00:00:000] [Debug] "},
    {"Error", "[00:00:00:000] [Error] "},
};

// Returns the header that `start` is the beginning of, or null. `start` has at most kHeaderLength
// characters.
const Header* FindHeader(std::string_view start) {
  const auto fits = [](char c, char wanted) {
    return wanted == '0' ? c >= '0' && c <= '9' : c == wanted;
  };
  for (const Header& header : kHeaders) {
    if (std::equal(start.begin(), start.end(), header.pattern.begin(), fits)) return &header;
  }
  return nullptr;
}

}  // namespace

std::vector<LogEntry> ParseLog(std::string_view log) {
  std::vector<LogEntry> entries;
  while (!log.empty()) {
    const std::size_t length = log.find('\n');
    const bool cut = length == std::string_view::npos;
    const std::string_view line = log.substr(0, length);
    log.remove_prefix(cut ? log.size() : length + 1);

    const Header* header = FindHeader(line.substr(0, kHeaderLength));
    if (header != nullptr && line.size() >= kHeaderLength) {
      entries.push_back({std::string(line.substr(kTimeStart, kTimeLength)),
                         std::string(header->level), std::string(line.substr(kHeaderLength))});
      continue;
    }
    const bool cut_header = cut && header != nullptr;
    if (!entries.empty() && !cut_header) entries.back().message.append("\n").append(line);
  }
  return entries;
}

}  // namespace system_info
