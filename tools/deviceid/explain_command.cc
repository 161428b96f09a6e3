#include "tools/deviceid/explain_command.h"

#include <iostream>
#include <memory>
#include <optional>

#include "inspection/case_file.h"
#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/log_facts.h"
#include "inspection/played_call.h"
#include "inspection/saved_log.h"
#include "platform/native_paths.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"

namespace deviceid {
namespace {

using system_info::Explanation;

constexpr const char* kFooter =
    R"(PATH is a kept copy of a state folder, a log that a host kept, a case file of
"deviceid report", or - for a log or a case file on standard input.

Examples:
  deviceid explain                            this PC
  deviceid explain --against ~/deviceid.kept  this PC and a copy of the folder
  deviceid explain host.log                   the call that wrote this log
  deviceid explain case.json                  the PC that a case file is of

Writes nothing.

Exit status:
  0   the id stays
  10  the id changes, at once or at the next comparison
  20  there is no id
  2   wrong usage
  65  the input is no log, case file or state folder, or it is damaged
  66  no such file
  74  the output cannot be written
  77  permission denied)";

struct Arguments {
  std::string format = "2.0";
  std::optional<std::string> path;
  std::optional<std::string> against;
  bool json = false;
};

std::string ReadStandardInput() {
  std::string text(kLargestUserFile + 1, '\0');
  std::cin.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::cin.gcount()));
  if (text.size() > kLargestUserFile)
    throw Failure(kBadData, "standard input is larger than 64 MB");
  return text;
}

Explanation ExplainCaseOf(const std::string& name, const std::string& bytes) try {
  return system_info::ExplainCaseFile(bytes);
} catch (const system_info::BadCaseFile& failure) {
  throw Failure(kBadData, name + " is no case file that can be read: " + failure.what());
}

Explanation ExplainLogOf(const std::string& name, const std::string& bytes) {
  if (system_info::LooksLikeCaseFile(bytes)) return ExplainCaseOf(name, bytes);
  const bool is_log = system_info::ReadLogFacts(system_info::RestoreLog(bytes)).calls > 0;
  if (!is_log) throw Failure(kBadData, name + " holds no log of a call");
  return system_info::ExplainLog(bytes);
}

Explanation ExplainThisMachine(const Arguments& arguments) {
  CheckFormat(arguments.format);
  const auto hardware = system_info::ReadThisMachine();
  const system_info::MachineState machine = LookAtMachine(arguments.format, *hardware);
  Explanation explanation = system_info::ExplainMachine(machine);
  if (arguments.against) {
    system_info::CompareWithKept(explanation, machine.folders,
                                 ReadKeptFolder(system_info::FromUtf8(*arguments.against)));
  }
  return explanation;
}

Explanation ExplainKeptFolder(const std::filesystem::path& path, const Arguments& arguments) {
  const system_info::StateFolder folder = ReadKeptFolder(path);
  Explanation explanation = system_info::ExplainFolder(folder);
  if (arguments.against) {
    system_info::CompareWithKept(explanation, {folder},
                                 ReadKeptFolder(system_info::FromUtf8(*arguments.against)));
  }
  return explanation;
}

Explanation Explain(const Arguments& arguments) {
  if (arguments.format != "2.0" && (arguments.path || arguments.against)) {
    throw Failure(kWrongUsage,
                  "--format is for this machine as it is; folders hold what format 2.0 stores, and "
                  "a log names its format");
  }
  if (!arguments.path) return ExplainThisMachine(arguments);
  const std::string& name = *arguments.path;
  if (name.empty()) throw Failure(kWrongUsage, "PATH is empty");
  const auto path = system_info::FromUtf8(name);
  std::error_code failure;
  const bool folder = name != "-" && std::filesystem::is_directory(path, failure);
  if (folder) return ExplainKeptFolder(path, arguments);
  if (arguments.against) throw Failure(kWrongUsage, "--against goes with a folder, not with a log");
  if (name == "-") return ExplainLogOf("standard input", ReadStandardInput());
  const std::string file = system_info::ToUtf8(path.filename());
  if (file == "hid_settings" || file == "device.idv2" || file == "device.id") {
    throw Failure(kWrongUsage, name + " is a stored file; explain its folder, or inspect it");
  }
  return ExplainLogOf(name, ReadUserFile(path, kLargestUserFile));
}

int Run(const Arguments& arguments) {
  const Explanation explanation = Explain(arguments);
  if (arguments.json) {
    std::cout << system_info::ToJson(explanation) << '\n';
  } else {
    std::cout << system_info::ToText(explanation, {WantsColour(), LocalDate});
  }
  return FinishOutput(explanation.status);
}

}  // namespace

Command ExplainCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {
      "explain",
      "Say in one sentence why the id is what it is, and what comes next",
      kFooter,
      {{"PATH", "A kept state folder, a log or a case file", &arguments->path, ValueKind::kFile},
       {"--against", "A kept copy of the state folder", &arguments->against, ValueKind::kFolder},
       FormatOption(&arguments->format),
       JsonOption(&arguments->json)},
      [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
