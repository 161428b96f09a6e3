#include "tools/deviceid/repair_sight.h"

#include <memory>

#include "deviceid.h"
#include "platform/file_attributes.h"
#include "platform/file_backup.h"
#include "platform/file_rights.h"
#include "platform/native_paths.h"
#include "support/call_log.h"
#include "support/folder_paths.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

namespace fs = std::filesystem;
using system_info::FileChange;
using system_info::FileKind;
using system_info::FromSystemText;
using system_info::PlayedExport;
using system_info::Standing;
using system_info::StoredFile;
using system_info::ToUtf8;

constexpr const char* kFormat = "2.0";
constexpr system_info::HidFormatVersion kVersion(2, 0);

const char* NameOf(FileKind kind) {
  switch (kind) {
    case FileKind::kLink:
      return " is a link";
    case FileKind::kFolder:
      return " is a folder";
    case FileKind::kRegular:
      return " is a file";
    case FileKind::kOther:
    case FileKind::kMissing:
    case FileKind::kUnknown:
      break;
  }
  return " is no regular file";
}

[[noreturn]] void RefuseObstacle(const fs::path& path, FileKind kind) {
  throw Failure(kRefused, ToUtf8(path) + NameOf(kind) + "; move it away first");
}

// A call that finds each file empty, with the rights that it has.
system_info::PlayedCall PlayFresh(const RepairSight& sight, system_info::HardwareSource& hardware) {
  system_info::Pretence pretence;
  for (std::size_t i = 0; i < sight.folders.size(); ++i) {
    for (const auto& [name, file] : kStoredFiles) {
      if ((sight.folders[i].*file).state == StoredFile::State::kMissing) continue;
      const std::string path = sight.paths[i] + system_info::PathSeparator() + name;
      pretence.changes.push_back({FileChange::Kind::kFileWritten, path, {}});
    }
  }
  return system_info::PlayCall(PlayedExport::kMod, kFormat, DEVICEID_FORCE_RANDOM_HID, hardware,
                               pretence);
}

bool MayMake(const FileChange& change) {
  const auto rights = system_info::LookUpRights(system_info::SystemPath(change.path));
  if (change.kind == FileChange::Kind::kFolderMade) return true;  // As the library can.
  if (change.kind == FileChange::Kind::kFileRemoved) return rights.may_remove_name;
  if (rights.standing == Standing::kFile) return rights.may_write;
  // In a folder that is made first.
  return rights.standing == Standing::kUnknown || rights.may_make_file;
}

}  // namespace

std::vector<std::string> StateFolderTexts() {
  return {system_info::CommonFolderPath(false), system_info::UserFolderPath(false)};
}

std::vector<fs::path> StateFolderPaths() {
  std::vector<fs::path> paths;
  for (const std::string& text : StateFolderTexts()) paths.push_back(FromSystemText(text));
  return paths;
}

RepairSight LookForRepair(system_info::HardwareSource& hardware) {
  RepairSight sight;
  const system_info::MachineState machine = LookAtMachine(kFormat, hardware);
  sight.folders = machine.folders;
  sight.paths = StateFolderTexts();
  sight.present = system_info::ExplainMachine(machine);
  sight.next = machine.next;
  sight.fresh = PlayFresh(sight, hardware);
  const auto log = std::make_shared<system_info::HIDLog>();
  sight.readable_hardware = !hardware.GetHardwareIdString(kVersion, log).empty();
  return sight;
}

void RefuseObstacles() {
  for (const fs::path& folder : StateFolderPaths()) {
    std::error_code hidden;
    const bool in_the_way = fs::exists(folder, hidden) && !fs::is_directory(folder, hidden);
    if (in_the_way) RefuseObstacle(folder, system_info::LookAtFile(folder).kind);
    for (const auto& [name, file] : kStoredFiles) {
      const FileKind kind = system_info::LookAtFile(folder / name).kind;
      if (kind == FileKind::kRegular || kind == FileKind::kMissing) continue;
      if (kind != FileKind::kUnknown) RefuseObstacle(folder / name, kind);
    }
  }
}

void RefuseWithoutRights(const std::vector<FileChange>& changes,
                         const std::vector<FileChange>& effects) {
  for (const FileChange& change : changes) {
    if (MayMake(change)) continue;
    throw Failure(kNoRights, "this account may not change " + ToUtf8(FromSystemText(change.path)));
  }
  for (const auto* list : {&changes, &effects}) {
    for (const FileChange& change : *list) {
      const fs::path path = FromSystemText(change.path);
      const auto facts = system_info::LookAtFile(path);
      if (facts.kind != FileKind::kRegular) continue;
      const bool readable = system_info::ReadBytes(path, 1).has_value();
      if (readable && system_info::MayMakeAgain(path)) continue;
      throw Failure(kNoRights, ToUtf8(path) + " belongs to " + facts.owner +
                                   ", and this account could not bring it back; run the repair as "
                                   "that account or as an administrator");
    }
  }
}

}  // namespace deviceid
