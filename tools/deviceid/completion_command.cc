#include "tools/deviceid/completion_command.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

constexpr const char* kFooter =
    R"(Examples:
  source <(deviceid completion bash)                          this bash
  source <(deviceid completion zsh)                           this zsh
  deviceid completion powershell | Out-String | iex           this PowerShell
  deviceid completion bash > ~/.local/share/bash-completion/completions/deviceid

Writes nothing.

Exit status:
  0   printed
  2   wrong usage
  74  the output cannot be written)";

// In front of and behind what the program says of its commands. The functions of a shell find the
// command, and the word in front of the present one.
constexpr const char* kBashStart =
    R"(# Completion of deviceid in bash, by "deviceid completion bash".

# Offers what compgen finds behind a prefix. Bash replaces only what follows the last "=" or ":", as
# far as they end a word for it.
_deviceid_offer()
{
    local prefix=$1 ends='' kept=''
    [[ $COMP_WORDBREAKS != *=* ]] || ends+='='
    [[ $COMP_WORDBREAKS != *:* ]] || ends+=':'
    [[ -z $ends ]] || kept=${current%"${current##*[$ends]}"}
    local -a found
    mapfile -t found < <(compgen -P "$prefix" "${@:2}" -- "${current#"$prefix"}")
    COMPREPLY+=("${found[@]#"$kept"}")
    [[ $2 == -W ]] || compopt -o filenames 2> /dev/null
    [[ ${#COMPREPLY[@]} != 1 || ${COMPREPLY[0]} != *[=:] ]] || compopt -o nospace 2> /dev/null
}

_deviceid()
{
    local command='' word current='' IFS=$' \t\n'
    local -a before
    read -r -a before <<< "${COMP_LINE:0:COMP_POINT}"
    COMPREPLY=()
    if [[ ${COMP_LINE:0:COMP_POINT} != *[[:space:]] ]]; then
        current=${before[-1]}
        unset 'before[-1]'
    fi
    [[ $current != --*=* ]] || { before+=("${current%%=*}") && current=${current#*=}; }
    for word in "${before[@]:1}"; do
        case $word in
)";

constexpr const char* kZshStart = R"(#compdef deviceid
# Completion of deviceid in zsh, by "deviceid completion zsh".

_deviceid()
{
    local command='' word
    local -a offers
    for word in ${words[2,CURRENT-1]}; do
        case $word in
)";

constexpr const char* kPowerShellStart =
    R"(# Completion of deviceid in PowerShell, by "deviceid completion powershell".
Register-ArgumentCompleter -Native -CommandName deviceid, deviceid.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    # By command, and by command and option: what can follow, and what it is.
    $offers = @{
)";

constexpr const char* kPowerShellEnd = R"script(    }
    $before = @($commandAst.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $cursorPosition } | ForEach-Object { "$_" })
    $command = @($before | Where-Object { $_ -notlike '-*' -and $offers.ContainsKey($_) }) + '' |
        Select-Object -First 1
    $key = $command
    if ($before -and $offers.ContainsKey("$command $($before[-1])")) {
        $key = "$command $($before[-1])"
    }
    # Without an offer PowerShell completes paths.
    $offers[$key].GetEnumerator() | Where-Object { $_.Key -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_.Key, $_.Key, 'ParameterValue', $_.Value)
    }
}
)script";

bool IsNamed(const Option& option) { return option.name.starts_with("--"); }

bool TakesValue(const Option& option) { return !std::holds_alternative<bool*>(option.target); }

// A word and what it is.
using Offer = std::pair<std::string, std::string>;

std::vector<Offer> ValuesOf(const Option& option) {
  std::vector<Offer> offers;
  for (const auto* list : {&option.choices, &option.words}) {
    for (const std::string& word : *list) offers.emplace_back(word, option.help);
  }
  return offers;
}

// What can stand behind a command, or behind the program.
std::vector<Offer> OffersOf(const Command& command, const std::vector<Command>& commands) {
  std::vector<Offer> offers;
  for (const Command& other : commands) {
    if (command.name.empty() && !other.name.empty()) offers.emplace_back(other.name, other.summary);
  }
  for (const Option& option : command.options) {
    if (IsNamed(option)) {
      offers.emplace_back(option.name, option.help);
    } else {
      const auto values = ValuesOf(option);
      offers.insert(offers.end(), values.begin(), values.end());
    }
  }
  offers.emplace_back("--help", "Print what the command does");
  if (command.name.empty()) offers.emplace_back("--version", "Print the version of the library");
  return offers;
}

// `text` in single quotation marks, within which `quote` stands for one.
std::string Quoted(const std::string& text, const std::string& quote) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? quote : std::string(1, c);
  return quoted + "'";
}

std::string NamesOf(const std::vector<Command>& commands) {
  std::string names;
  for (const Command& command : commands) {
    if (command.name.empty()) continue;
    names += (names.empty() ? "" : "|") + command.name;
  }
  return names;
}

std::string WordsOf(const std::vector<Offer>& offers, const char* between) {
  std::string words;
  for (const auto& [word, help] : offers) words += (words.empty() ? "" : between) + word;
  return words;
}

bool NamesPaths(const Option& option) { return option.kind != ValueKind::kText; }

std::string BashPaths(const Option& option, const std::string& prefix) {
  const std::string kind = option.kind == ValueKind::kFolder ? "-d" : "-f";
  return "_deviceid_offer '" + prefix + "' " + kind;
}

std::string BashOffer(const std::vector<Offer>& offers) {
  return "_deviceid_offer '' -W " + Quoted(WordsOf(offers, " "), "'\\''");
}

// What follows an option that takes a value.
std::string BashValues(const Command& command) {
  std::string text;
  for (const Option& option : command.options) {
    if (!IsNamed(option) || !TakesValue(option)) continue;
    const std::string offer =
        NamesPaths(option) ? BashPaths(option, "") : BashOffer(ValuesOf(option));
    text += "        '" + command.name + " " + option.name + "') " + offer + "; return ;;\n";
  }
  return text;
}

std::string BashWords(const Command& command, const std::vector<Command>& commands) {
  std::string text = "        '" + command.name + "')\n";
  for (const Option& option : command.options) {
    if (IsNamed(option) || !NamesPaths(option)) continue;
    for (const std::string& word : option.words) {
      if (!word.ends_with('=')) continue;
      text += "            [[ $current != " + word + "* ]] || { " + BashPaths(option, word) +
              "; return; }\n";
    }
    if (option.words.empty()) {
      text += "            [[ $current == -* ]] || " + BashPaths(option, "") + "\n";
    }
  }
  return text + "            " + BashOffer(OffersOf(command, commands)) + " ;;\n";
}

std::string BashScript(const std::vector<Command>& commands) {
  std::string text = kBashStart;
  text += "            " + NamesOf(commands) + ") command=$word && break ;;\n";
  text += "        esac\n    done\n    case \"$command ${before[-1]}\" in\n";
  for (const Command& command : commands) text += BashValues(command);
  text += "    esac\n    case $command in\n";
  for (const Command& command : commands) text += BashWords(command, commands);
  return text + "    esac\n}\ncomplete -F _deviceid deviceid\n";
}

std::string ZshPaths(const Option& option) {
  return option.kind == ValueKind::kFolder ? "_files -/" : "_files";
}

// "_describe" takes a colon for the end of a word.
std::string ZshOffer(const std::vector<Offer>& offers) {
  std::string text = "offers=(";
  for (const auto& [word, help] : offers) {
    std::string escaped;
    for (const char c : word) escaped += c == ':' ? "\\:" : std::string(1, c);
    text += "\n                " + Quoted(escaped.append(":").append(help), "'\\''");
  }
  return text + ")\n            _describe -V deviceid offers";
}

std::string ZshValues(const Command& command) {
  std::string text;
  for (const Option& option : command.options) {
    if (!IsNamed(option) || !TakesValue(option)) continue;
    const std::string offer =
        NamesPaths(option) ? ZshPaths(option) : "compadd -- " + WordsOf(ValuesOf(option), " ");
    text += "        ('" + command.name + " " + option.name + "') " + offer + "; return ;;\n";
  }
  return text;
}

std::string ZshWords(const Command& command, const std::vector<Command>& commands) {
  std::string text = "        ('" + command.name + "')\n";
  for (const Option& option : command.options) {
    if (IsNamed(option) || !NamesPaths(option)) continue;
    if (option.words.empty()) text += "            " + ZshPaths(option) + "\n";
    for (const std::string& word : option.words) {
      if (!word.ends_with('=')) continue;
      text += "            if compset -P " + word + "; then " + ZshPaths(option) + "; return; fi\n";
    }
  }
  return text + "            " + ZshOffer(OffersOf(command, commands)) + " ;;\n";
}

std::string ZshScript(const std::vector<Command>& commands) {
  std::string text = kZshStart;
  text += "            (" + NamesOf(commands) + ") command=$word && break ;;\n";
  text += "        esac\n    done\n    case \"$command ${words[CURRENT-1]}\" in\n";
  for (const Command& command : commands) text += ZshValues(command);
  text += "    esac\n    case $command in\n";
  for (const Command& command : commands) text += ZshWords(command, commands);
  return text +
         "    esac\n}\n\nif [[ $funcstack[1] == _deviceid ]]; then\n    _deviceid \"$@\"\n"
         "else\n    compdef _deviceid deviceid\nfi\n";
}

std::string PowerShellOffers(const std::string& key, const std::vector<Offer>& offers) {
  std::string text = "        " + Quoted(key, "''") + " = [ordered]@{";
  for (const auto& [word, help] : offers) {
    text += "\n            " + Quoted(word, "''") + " = " + Quoted(help, "''");
  }
  return text + "\n        }\n";
}

std::string PowerShellScript(const std::vector<Command>& commands) {
  std::string text = kPowerShellStart;
  for (const Command& command : commands) {
    text += PowerShellOffers(command.name, OffersOf(command, commands));
    for (const Option& option : command.options) {
      if (!IsNamed(option) || !TakesValue(option)) continue;
      text += PowerShellOffers(command.name + " " + option.name, ValuesOf(option));
    }
  }
  return text + kPowerShellEnd;
}

struct Shell {
  const char* name;
  std::string (*script)(const std::vector<Command>& commands);
};
constexpr Shell kShells[] = {
    {"bash", BashScript}, {"zsh", ZshScript}, {"powershell", PowerShellScript}};

int Run(const std::string& wanted, const std::vector<Command>& commands) {
  std::vector<std::string> names;
  for (const auto& [name, script] : kShells) {
    names.emplace_back(name);
    if (wanted != name) continue;
    std::cout << script(commands);
    return FinishOutput(kGood);
  }
  throw Failure(kWrongUsage,
                "there is no completion for \"" + wanted + "\"" + SuggestionOrAll(wanted, names));
}

}  // namespace

Command CompletionCommand(const std::vector<Command>& others) {
  const auto shell = std::make_shared<std::string>();
  Command command = {"completion",
                     "Print what a shell needs to complete command lines",
                     kFooter,
                     {{"SHELL",
                       "The shell",
                       shell.get(),
                       ValueKind::kText,
                       {"bash", "zsh", "powershell"},
                       {},
                       true}},
                     {}};
  std::vector<Command> all = others;
  all.push_back(command);
  command.run = [shell, all] { return Run(*shell, all); };
  return command;
}

}  // namespace deviceid
