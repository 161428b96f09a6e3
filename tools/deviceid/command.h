// How a command describes itself: for the command line, its help and the completion in shells.

#ifndef DEVICEID_TOOLS_DEVICEID_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_COMMAND_H_

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace deviceid {

// What a shell offers for the value of an option.
enum class ValueKind { kText, kFile, kFolder };

// One option, or one place for words that follow the command.
//
// The value that was given goes to `target`, in UTF-8 as far as the system knows its characters. A
// bool is an option without a value, a vector takes any number of words.
struct Option {
  std::string name;  // "--format", or "PATH" for words that are no options
  std::string help;
  std::variant<bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*> target;
  ValueKind kind = ValueKind::kText;
  std::vector<std::string> choices = {};  // All good values, where they can be listed.
  std::string excludes = {};              // An option listed before that cannot be given as well.
  bool required = false;
  // Good values, or how they begin, for completion alone. What follows a "=" at an end is of
  // `kind`.
  std::vector<std::string> words = {};
};

struct Command {
  std::string name;     // Empty for the call without a command.
  std::string summary;  // One line.
  std::string footer;   // Examples, whether it writes, its statuses.
  std::vector<Option> options;
  std::function<int()> run;  // Returns the exit status.
};

// Options that several commands have.
Option FormatOption(std::string* format);
Option JsonOption(bool* json);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_COMMAND_H_
