#include "tools/deviceid/machine_state.h"

#include <memory>
#include <vector>

#include "platform/accounts.h"
#include "platform/native_paths.h"
#include "support/call_log.h"
#include "support/folder_paths.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using system_info::FileChange;
using system_info::PlayedExport;
using system_info::StateFolder;
using system_info::StoredFile;

constexpr const char* kNewestFormat = "2.0";

// The file of `folders` at `path`, or null.
StoredFile* FindFile(std::vector<StateFolder>& folders, const std::filesystem::path& path) {
  for (StateFolder& folder : folders) {
    if (system_info::FromUtf8(folder.path) != path.parent_path()) continue;
    for (const auto& [name, file] : kStoredFiles) {
      if (path.filename() == name) return &(folder.*file);
    }
  }
  return nullptr;
}

void Pretend(const std::vector<FileChange>& changes, std::vector<StateFolder>& folders) {
  for (const FileChange& change : changes) {
    StoredFile* file = FindFile(folders, system_info::FromSystemText(change.path));
    if (file == nullptr) continue;
    *file = {};
    if (change.kind != FileChange::Kind::kFileWritten) continue;
    file->state = StoredFile::State::kRead;
    file->bytes = change.content;
  }
}

}  // namespace

void CheckFormat(const std::string& format) {
  if (system_info::IsSupportedVersion(format)) return;
  throw Failure(kWrongUsage, "the library knows no format \"" + format + "\"" +
                                 SuggestionOrAll(format, {system_info::SupportedVersions.begin(),
                                                          system_info::SupportedVersions.end()}));
}

system_info::MachineState LookAtMachine(const std::string& format,
                                        system_info::HardwareSource& hardware,
                                        const system_info::Pretence& pretence) {
  system_info::MachineState machine;
  machine.windows = system_info::PathSeparator() == '\\';
  machine.administrator = system_info::PresentAccount().privileged;
  machine.format = format;
  machine.folders = ReadStateFolders();
  Pretend(pretence.changes, machine.folders);
  machine.next = system_info::PlayCall(PlayedExport::kGet, format, 0, hardware, pretence);
  if (format != kNewestFormat) return machine;
  machine.recheck = system_info::PlayCall(PlayedExport::kRecheck, format, 0, hardware, pretence);
  const auto log = std::make_shared<system_info::HIDLog>();
  try {
    machine.hardware =
        hardware.GetHardwareIdList(system_info::HidFormatVersion(kNewestFormat), log);
  } catch (...) {
    machine.hardware.reset();  // The calls that were played tell of the failure.
  }
  machine.hardware_log = log->text();
  return machine;
}

}  // namespace deviceid
