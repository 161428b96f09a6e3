#include "tools/deviceid/machine_state.h"

#include <memory>
#include <vector>

#include "platform/accounts.h"
#include "platform/file_rights.h"
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

// True for two names of one folder, too.
bool IsSameFolder(const std::filesystem::path& one, const std::filesystem::path& other) {
  using system_info::FolderIdentity, system_info::SystemPath;
  const auto identity = FolderIdentity(SystemPath(one.native()));
  return one == other || (identity && identity == FolderIdentity(SystemPath(other.native())));
}

void Pretend(const FileChange& change, StateFolder& folder) {
  const std::filesystem::path path = system_info::FromSystemText(change.path);
  if (!IsSameFolder(path.parent_path(), system_info::FromUtf8(folder.path))) return;
  for (const auto& [name, file] : kStoredFiles) {
    if (path.filename() != name) continue;
    folder.*file = {};
    if (change.kind != FileChange::Kind::kFileWritten) continue;
    (folder.*file).state = StoredFile::State::kRead;
    (folder.*file).bytes = change.content;
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
  for (const FileChange& change : pretence.changes) {
    for (StateFolder& folder : machine.folders) Pretend(change, folder);
  }
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
