#include "tools/deviceid/inspect_command.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "inspection/stored_file_report.h"
#include "platform/native_paths.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "tools/deviceid/stored_file_reports.h"

namespace deviceid {
namespace {

using system_info::FileRole;
using system_info::StateFolder;
using system_info::StoredFile;
using system_info::StoredFileReport;

constexpr const char* kFooter =
    R"(PATH is a stored file, or a folder that holds some. Without one, the files of
this PC are shown.

Examples:
  deviceid inspect
  deviceid inspect /var/lib/BrindleQuayWorks/hid_settings

Writes nothing.

Exit status:
  0   all files are good
  10  a file is damaged, or record and id disagree
  2   wrong usage
  65  the folder holds no stored files
  66  no such file
  74  the output cannot be written
  77  permission denied)";

struct Arguments {
  std::vector<std::string> paths;
  bool json = false;
};

constexpr int kNotGood = 10;

void Append(std::vector<StoredFileReport>& reports, std::vector<StoredFileReport> more) {
  std::move(more.begin(), more.end(), std::back_inserter(reports));
}

// A file of another name is taken for what its bytes look like.
FileRole GuessRole(const std::filesystem::path& path) {
  if (const auto role = system_info::RoleOf(system_info::ToUtf8(path.filename()))) return *role;
  const StoredFile file = ReadStoredFile(path);
  const bool record =
      system_info::DecodeRecord(file.bytes).state == system_info::ContentState::kGood;
  return record ? FileRole::kRecord : FileRole::kId;
}

std::vector<StoredFileReport> ReportOnPath(const std::string& name) {
  if (name.empty()) throw Failure(kWrongUsage, "PATH is empty");
  if (name == "-") throw Failure(kWrongUsage, "inspect reads files, not standard input");
  const auto path = system_info::FromUtf8(name);
  std::error_code failure;
  if (std::filesystem::is_directory(path, failure)) {
    const StateFolder folder = ReadKeptFolder(path);
    return ReportOnFolder(system_info::FromUtf8(folder.path), StateFolder::Kind::kCopy);
  }
  StoredFileReport report = ReportOnFile(path, GuessRole(path));
  if (report.state == StoredFile::State::kMissing) {
    throw Failure(kNoInput, "there is no " + name);
  }
  if (report.why == "permission denied") throw Failure(kNoRights, "no rights to read " + name);
  return {std::move(report)};
}

int Run(const Arguments& arguments) {
  std::vector<StoredFileReport> reports;
  if (arguments.paths.empty()) reports = ReportOnMachine();
  for (const std::string& path : arguments.paths) Append(reports, ReportOnPath(path));

  if (arguments.json) {
    std::cout << system_info::ToJson(reports) << '\n';
  } else {
    std::cout << system_info::ToText(reports, {WantsColour(), LocalDate});
  }
  const bool bad = std::any_of(reports.begin(), reports.end(), system_info::IsBad);
  const bool together =
      system_info::RecordAgrees(reports) != false && !system_info::IsRecordWithoutId(reports);
  return FinishOutput(bad || !together ? kNotGood : kGood);
}

}  // namespace

Command InspectCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {"inspect",
          "Show what is stored, field by field",
          kFooter,
          {{"PATH", "Stored files or folders", &arguments->paths, ValueKind::kFile},
           JsonOption(&arguments->json)},
          [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
