// Turns the text of a call's log into its entries, for hosts that show or store them one by one.
#ifndef DEVICEID_INSPECTION_LOG_ENTRIES_H_
#define DEVICEID_INSPECTION_LOG_ENTRIES_H_

#include <string>
#include <string_view>
#include <vector>

namespace system_info {

struct LogEntry {
  std::string time;     // "HH:MM:SS:mmm", local time
  std::string level;    // "Info", "Debug" or "Error"
  std::string message;  // as it was logged: may hold line breaks and bytes that are not UTF-8
};

// Returns the entries of `log` in their order.
//
// An entry begins at each line that starts with a complete header like "[09:05:03:042] [Debug] ".
// Any other line belongs to the message of the entry before it; without one it is left out. `log`
// may have been cut anywhere: then the last message is shorter, or a piece of a header is left out.
std::vector<LogEntry> ParseLog(std::string_view log);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_LOG_ENTRIES_H_
