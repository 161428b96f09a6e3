// The command line of the program.

#ifndef DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_
#define DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace deviceid {

enum class Command { kCall, kExplain, kInspect };

// All texts are in UTF-8 as far as the system knows their characters.
struct Arguments {
  Command command = Command::kCall;
  std::string format = "2.0";
  bool json = false;

  // Of the plain call.
  bool log = false;
  bool recheck = false;
  bool no_store = false;
  bool yes = false;
  std::optional<std::uint32_t> flags;
  std::optional<std::string> library;

  // Of "explain" and "inspect".
  std::vector<std::string> paths;
  std::optional<std::string> against;
};

// None if the command line asked for help or the version, which is printed then. Throws Failure if
// it makes no sense.
std::optional<Arguments> ParseCommandLine(const std::vector<std::string>& words);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_
