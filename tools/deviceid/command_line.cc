#include "tools/deviceid/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <sstream>
#include <type_traits>

#include "deviceid.h"
#include "inspection/wrapped_text.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

std::string HelpOf(const Option& option) {
  std::string text = option.help;
  for (const std::string& choice : option.choices) {
    text += (choice == option.choices.front() ? ": " : ", ") + choice;
  }
  return text;
}

void Declare(CLI::App& app, const Option& option) {
  CLI::Option* declared = std::visit(
      [&](auto* target) {
        using Target = std::remove_pointer_t<decltype(target)>;
        if constexpr (std::is_same_v<Target, bool>) {
          return app.add_flag(option.name, *target, HelpOf(option));
        } else {
          return app.add_option(option.name, *target, HelpOf(option));
        }
      },
      option.target);
  if (std::holds_alternative<std::string*>(option.target)) declared->capture_default_str();
  const bool named = option.name.rfind("--", 0) == 0;
  const bool list = std::holds_alternative<std::vector<std::string>*>(option.target);
  if (named && list) declared->delimiter(',')->allow_extra_args(false);
  if (!option.excludes.empty()) declared->excludes(app.get_option(option.excludes));
  if (option.required) declared->required();
}

void Declare(CLI::App& app, const Command& command) {
  for (const Option& option : command.options) Declare(app, option);
  app.footer(command.footer + "\n");
}

// The options and commands that `word` could have been.
std::vector<std::string> NamesLike(const std::string& word, const std::vector<Command>& commands) {
  const bool option_wanted = word.rfind('-', 0) == 0;
  std::vector<std::string> names;
  for (const Command& command : commands) {
    if (!option_wanted && !command.name.empty()) names.push_back(command.name);
    if (!option_wanted) continue;
    for (const Option& option : command.options) names.push_back(option.name);
  }
  return names;
}

[[noreturn]] void RefuseCommandLine(const std::vector<std::string>& words,
                                    const std::vector<Command>& commands,
                                    const CLI::ParseError& error) {
  std::string hint;
  for (const std::string& word : words) {
    const std::string name = word.substr(0, word.find('='));
    const std::vector<std::string> names = NamesLike(name, commands);
    const bool known = std::find(names.begin(), names.end(), name) != names.end();
    if (known) continue;
    hint = Suggestion(name, names);
    if (!hint.empty()) break;
  }
  if (hint.empty()) hint = " (see deviceid --help)";
  throw Failure(kWrongUsage, error.what() + hint);
}

// `help` in lines of 80 columns. What is told of an option goes on below where it began.
std::string Fitted(const std::string& help) {
  constexpr std::size_t kTold = 30;
  std::string fitted;
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    while (line.size() > system_info::kWidth) {
      const std::size_t blank = line.rfind(' ', system_info::kWidth);
      system_info::AddLine(fitted, line.substr(0, blank));
      line.replace(0, blank + 1, std::string(kTold, ' '));
    }
    system_info::AddLine(fitted, line);
  }
  return fitted;
}

// Options of the call without a command say nothing to the others.
void RefuseOptionsBefore(const Command& command, const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    if (option->count() == 0) continue;
    throw Failure(kWrongUsage, option->get_name() + " before \"" + command.name +
                                   "\" has no meaning; options follow the command");
  }
}

}  // namespace

Option FormatOption(std::string* format) {
  return {"--format",
          "The format of the id",
          format,
          ValueKind::kText,
          {"1.0", "1.1", "1.2", "1.4", "1.5", "1.6", "2.0"}};
}

Option JsonOption(bool* json) { return {"--json", "Print one JSON object", json}; }

int RunCommandLine(const std::vector<Command>& commands, const std::vector<std::string>& words) {
  CLI::App app("Prints the id of this PC.", "deviceid");
  Declare(app, commands.front());
  app.set_version_flag("--version", GetHIDVersion(), "Print the version of the library");
  app.require_subcommand(0, 1);
  for (auto command = commands.begin() + 1; command != commands.end(); ++command) {
    Declare(*app.add_subcommand(command->name, command->summary), *command);
  }
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success& request) {
    std::ostringstream text;  // The help or the version.
    app.exit(request, text, text);
    std::cout << Fitted(text.str());
    return FinishOutput(kGood);
  } catch (const CLI::ParseError& error) {
    RefuseCommandLine(words, commands, error);
  }
  for (const Command& command : commands) {
    if (command.name.empty() || !app.got_subcommand(command.name)) continue;
    RefuseOptionsBefore(command, app);
    return command.run();
  }
  return commands.front().run();
}

}  // namespace deviceid
