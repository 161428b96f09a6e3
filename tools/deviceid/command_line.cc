#include "tools/deviceid/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cctype>

#include "deviceid.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

struct FlagName {
  const char* name;
  std::uint32_t bit;
};

constexpr std::array<FlagName, 3> kFlags = {{
    {"SkipDateCheck", DEVICEID_SKIP_DATE_CHECK},
    {"ForceRandomHid", DEVICEID_FORCE_RANDOM_HID},
    {"UseEmulatedHardwareIds", DEVICEID_USE_EMULATED_HARDWARE_IDS},
}};

constexpr const char* kCallFooter = R"(
Examples:
  deviceid                         the id of this PC, as a host gets it
  deviceid --no-store              the same, but nothing is stored
  deviceid --format 1.5 --log      the values that an id is made of
  deviceid explain                 why the id is what it is, and what comes next

Without a command the program makes the call that a host makes: it may store an id, and says so in
one line on standard error. Only --no-store never writes.

Exit status: the result of the library, 0 for an id; 2 wrong usage; 69 no such library; 74 output
cannot be written; 75 another account would lose its id (see --yes).)";

constexpr const char* kExplainFooter = R"(
PATH is a kept copy of a state folder, a log that a host kept, or - for a log on standard input.

Examples:
  deviceid explain                            this PC
  deviceid explain --against ~/deviceid.kept  this PC, beside a kept copy of the folder
  deviceid explain host.log                   the call that wrote this log

Writes nothing.

Exit status: 0 the id stays; 10 it changes, or will; 20 there is no id; 2 wrong usage; 65 neither a log
nor a state folder; 66 no such file; 74 output cannot be written; 77 no rights.)";

constexpr const char* kInspectFooter = R"(
PATH is a stored file, or a folder that holds some; without one, the files of this PC are shown.

Examples:
  deviceid inspect
  deviceid inspect /var/lib/BrindleQuayWorks/hid_settings

Writes nothing.

Exit status: 0 all files are good; 10 one is damaged, or they do not agree; 2 wrong usage; 65 a folder
without stored files; 66 no such file; 74 output cannot be written; 77 no rights.)";

bool SameWord(const std::string& left, const std::string& right) {
  return std::equal(
      left.begin(), left.end(), right.begin(), right.end(),
      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

std::uint32_t FlagBit(const std::string& name) {
  std::vector<std::string> names;
  for (const FlagName& flag : kFlags) {
    if (SameWord(name, flag.name)) return flag.bit;
    names.emplace_back(flag.name);
  }
  throw Failure(kWrongUsage, "there is no flag \"" + name + "\"" + Suggestion(name, names));
}

void DeclareFormat(CLI::App& app, Arguments& arguments) {
  app.add_option("--format", arguments.format, "1.0, 1.1, 1.2, 1.4, 1.5, 1.6 or 2.0")
      ->capture_default_str();
}

void DeclareCall(CLI::App& app, Arguments& arguments) {
  const auto set_flags = [&arguments](const std::vector<std::string>& names) {
    std::uint32_t bits = 0;
    for (const std::string& name : names) bits |= FlagBit(name);
    arguments.flags = bits;
  };
  DeclareFormat(app, arguments);
  app.add_flag("--log", arguments.log, "Print the log of the call to standard error");
  app.add_flag("--json", arguments.json, "Print one JSON object with result, id and log");
  CLI::Option* recheck = app.add_flag("--recheck", arguments.recheck,
                                      "Compare the hardware whatever the age of the stored record");
  app.add_option_function<std::vector<std::string>>(
         "--flags", set_flags, "SkipDateCheck, ForceRandomHid, UseEmulatedHardwareIds")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->excludes(recheck);
  CLI::Option* no_store =
      app.add_flag("--no-store", arguments.no_store, "Play the call and store nothing");
  app.add_flag("--yes", arguments.yes, "Store the id even if another account loses its own");
  app.add_option("--library", arguments.library, "Call this library instead of the one inside")
      ->excludes(no_store);
  app.set_version_flag("--version", GetHIDVersion(), "Print the version of the library");
  app.footer(kCallFooter);
}

void DeclareExplain(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand(
      "explain", "Say in one sentence why the id is what it is, and what comes next");
  command->callback([&arguments] { arguments.command = Command::kExplain; });
  command->add_option("PATH", arguments.paths, "A kept state folder or a log")->expected(0, 1);
  command->add_option("--against", arguments.against, "A kept copy of the state folder");
  DeclareFormat(*command, arguments);
  command->add_flag("--json", arguments.json, "Print one JSON object");
  command->footer(kExplainFooter);
}

void DeclareInspect(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("inspect", "Show what is stored, field by field");
  command->callback([&arguments] { arguments.command = Command::kInspect; });
  command->add_option("PATH", arguments.paths, "Stored files or folders");
  command->add_flag("--json", arguments.json, "Print one JSON object");
  command->footer(kInspectFooter);
}

// The options and commands that `word` could have been.
std::vector<std::string> NamesLike(const std::string& word, const CLI::App& app) {
  std::vector<std::string> names;
  if (word.rfind('-', 0) != 0) {
    for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
    return names;
  }
  const auto add = [&names](const CLI::App& from) {
    for (const CLI::Option* option : from.get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  };
  add(app);
  for (const CLI::App* command : app.get_subcommands({})) add(*command);
  return names;
}

[[noreturn]] void RefuseCommandLine(const std::vector<std::string>& words, const CLI::App& app,
                                    const CLI::ParseError& error) {
  std::string hint;
  for (const std::string& word : words) {
    const std::string name = word.substr(0, word.find('='));
    const std::vector<std::string> names = NamesLike(name, app);
    const bool known = std::find(names.begin(), names.end(), name) != names.end();
    if (known) continue;
    hint = Suggestion(name, names);
    if (!hint.empty()) break;
  }
  if (hint.empty()) hint = " (see deviceid --help)";
  throw Failure(kWrongUsage, error.what() + hint);
}

}  // namespace

std::optional<Arguments> ParseCommandLine(const std::vector<std::string>& words) {
  Arguments arguments;
  CLI::App app("Prints the id of this PC.", "deviceid");
  DeclareCall(app, arguments);
  DeclareExplain(app, arguments);
  DeclareInspect(app, arguments);
  app.require_subcommand(0, 1);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success& request) {
    app.exit(request);  // prints the help or the version
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    RefuseCommandLine(words, app, error);
  }
  return arguments;
}

}  // namespace deviceid
