#include "tools/deviceid/explain_command.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>

#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/log_facts.h"
#include "inspection/played_call.h"
#include "inspection/saved_log.h"
#include "platform/accounts.h"
#include "platform/native_paths.h"
#include "support/call_log.h"
#include "support/folder_paths.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using system_info::Explanation;
using system_info::PlayedExport;

constexpr std::size_t kLargestLog = std::size_t{64} << 20;

constexpr const char* kNewestFormat = "2.0";

void CheckFormat(const std::string& format) {
  if (system_info::IsSupportedVersion(format)) return;
  throw Failure(kWrongUsage, "the library knows no format \"" + format + "\"" +
                                 Suggestion(format, {system_info::SupportedVersions.begin(),
                                                     system_info::SupportedVersions.end()}));
}

std::string ReadStandardInput() {
  std::string text(kLargestLog + 1, '\0');
  std::cin.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::cin.gcount()));
  if (text.size() > kLargestLog) throw Failure(kBadData, "the log is larger than 64 MB");
  return text;
}

Explanation ExplainLogOf(const std::string& name, const std::string& bytes) {
  const bool is_log = system_info::ReadLogFacts(system_info::RestoreLog(bytes)).calls > 0;
  if (!is_log) throw Failure(kBadData, name + " holds no log of a call");
  return system_info::ExplainLog(bytes);
}

Explanation ExplainThisMachine(const Arguments& arguments) {
  const system_info::MachineState machine = LookAtMachine(arguments.format);
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
  if (arguments.paths.empty()) return ExplainThisMachine(arguments);
  const std::string& name = arguments.paths.front();
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
  return ExplainLogOf(name, ReadUserFile(path, kLargestLog));
}

}  // namespace

system_info::MachineState LookAtMachine(const std::string& format) {
  CheckFormat(format);
  system_info::MachineState machine;
  machine.windows = system_info::PathSeparator() == '\\';
  machine.administrator = system_info::PresentAccount().privileged;
  machine.format = format;
  machine.folders = ReadStateFolders();
  const auto hardware = system_info::ReadThisMachine();
  machine.next = system_info::PlayCall(PlayedExport::kGet, format, 0, *hardware);
  if (format != kNewestFormat) return machine;
  machine.recheck = system_info::PlayCall(PlayedExport::kRecheck, format, 0, *hardware);
  const auto log = std::make_shared<system_info::HIDLog>();
  machine.hardware = hardware->GetHardwareIdList(system_info::HidFormatVersion(kNewestFormat), log);
  machine.hardware_log = log->text();
  return machine;
}

int RunExplain(const Arguments& arguments) {
  const Explanation explanation = Explain(arguments);
  if (arguments.json) {
    std::cout << system_info::ToJson(explanation) << '\n';
  } else {
    std::cout << system_info::ToText(explanation, {WantsColour(), LocalDate});
  }
  return FinishOutput(explanation.status);
}

}  // namespace deviceid
