#include "tools/deviceid/simulate_command.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspection/change_matrix.h"
#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "platform/native_paths.h"
#include "support/clock.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/simulated_machine.h"
#include "tools/deviceid/state_folders.h"
#include "tools/deviceid/whole_file.h"

namespace deviceid {
namespace {

constexpr const char* kFooter =
    R"(CHANGE is one of these; several can be given. PART is volume, product, board or
network.
  replace=PART      the part has another value
  gone=PART         the part has no value
  new=PART:TEXT     the part has this value
  days=NUMBER       the clock is so many days ahead
  account=ordinary  the calling account cannot read serial numbers (Linux)
  restore=DIR       a kept state folder takes the place of the present files

Examples:
  deviceid simulate replace=network days=30   a new adapter, when next compared
  deviceid simulate --all                     each single change and each pair
  deviceid simulate --svg id.svg              the same, also as a picture

Writes nothing but the file of --svg.

Exit status (with --all, that of the machine as it is):
  0   the id stays
  10  the id changes, at once or at the next comparison
  20  there is no id
  2   wrong usage, or no such part
  65  not a state folder
  66  no such folder
  74  the output cannot be written
  77  permission denied)";

struct Arguments {
  std::vector<std::string> changes;
  bool all = false;
  std::optional<std::string> svg;
  std::string format = "2.0";
  bool json = false;
};

int RunAll(const Arguments& arguments, SimulatedMachine& machine,
           const std::vector<Change>& changes) {
  const system_info::ChangeMatrix matrix = machine.TryAll(changes);
  if (arguments.svg) {
    WriteWholeFile(system_info::FromUtf8(*arguments.svg),
                   ToSvg(matrix, LocalDate(system_info::PresentSeconds())));
  }
  std::cout << (arguments.json ? ToJson(matrix) + "\n" : ToText(matrix));
  return FinishOutput(matrix.unchanged.status);
}

int Run(const Arguments& arguments) {
  const bool all = arguments.all || arguments.svg;
  if (arguments.svg) CheckPlaceOfFile(system_info::FromUtf8(*arguments.svg));
  const std::vector<Change> changes = ParseChanges(arguments.changes);
  if (changes.empty() && !all) {
    throw Failure(kWrongUsage, "no change is given, as replace=network or --all");
  }
  SimulatedMachine machine(arguments.format);
  if (all) return RunAll(arguments, machine, changes);
  const system_info::Explanation explanation = machine.Explain(changes);
  if (arguments.json) {
    std::cout << system_info::ToJson(explanation) << '\n';
  } else {
    std::cout << system_info::ToText(explanation, {WantsColour(), LocalDate});
  }
  return FinishOutput(explanation.status);
}

}  // namespace

Command SimulateCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {"simulate",
          "Play the next comparison with another machine, without touching this one",
          kFooter,
          {{"CHANGE",
            "How the machine differs from this one",
            &arguments->changes,
            ValueKind::kFolder,
            {},
            {},
            false,
            ChangeWords()},
           {"--all", "Try each change of one part, and each pair", &arguments->all},
           {"--svg", "Draw --all into this file", &arguments->svg, ValueKind::kFile},
           FormatOption(&arguments->format),
           JsonOption(&arguments->json)},
          [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
