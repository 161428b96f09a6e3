#include "tools/deviceid/machine_health.h"

#include <filesystem>
#include <string>

#include "inspection/overlaid_files.h"
#include "inspection/played_call.h"
#include "inspection/stored_bytes.h"
#include "platform/accounts.h"
#include "platform/native_paths.h"
#include "support/clock.h"
#include "support/folder_paths.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/state_folders.h"
#include "tools/deviceid/stored_file_reports.h"
#include "tools/deviceid/stored_ids.h"

namespace deviceid {
namespace {

using system_info::FolderFacts;
using system_info::StateFolder;

constexpr const char* kRecordName = "hid_settings";
constexpr const char* kOldIdName = "device.id";

// Played in memory with the record, which stands for all files of a folder.
bool CanStore(const std::string& folder) {
  system_info::OverlaidFiles files;
  if (!files.IsDirectory(folder) && files.MakeFolder(folder) == system_info::NewFolder::kFailed) {
    return false;
  }
  const int file = files.OpenToWrite(folder + system_info::PathSeparator() + kRecordName);
  if (file < 0) return false;
  files.Close(file);
  return true;
}

std::string GoodIdIn(const std::filesystem::path& folder) {
  return system_info::JudgeIdBytes(ReadStoredFile(folder / kOldIdName).bytes).id;
}

FolderFacts LookAtFolder(StateFolder::Kind kind, const std::string& path,
                         const std::string& old_path) {
  const auto folder = system_info::FromSystemText(path);
  const auto old_folder = system_info::FromSystemText(old_path);
  FolderFacts facts;
  facts.kind = kind;
  facts.path = system_info::ToUtf8(folder);
  facts.attributes = system_info::LookAtFile(folder);
  facts.can_store = !path.empty() && CanStore(path);
  facts.file_system = system_info::LookAtFileSystem(folder, folder / kRecordName);
  facts.old_path = system_info::ToUtf8(old_folder);
  facts.old_id = GoodIdIn(old_folder);
  return facts;
}

}  // namespace

system_info::HealthFacts LookAtHealth() {
  using system_info::CommonFolderPath;
  using system_info::UserFolderPath;
  const auto hardware = system_info::ReadThisMachine();
  system_info::HealthFacts facts;
  facts.now = system_info::PresentSeconds();
  facts.account = system_info::PresentAccount();
  facts.system = system_info::LookAtSystem();
  facts.machine = LookAtMachine("2.0", *hardware);
  facts.explanation = system_info::ExplainMachine(facts.machine);
  facts.folders = {
      LookAtFolder(StateFolder::Kind::kCommon, CommonFolderPath(false), CommonFolderPath(true)),
      LookAtFolder(StateFolder::Kind::kUser, UserFolderPath(false), UserFolderPath(true))};
  facts.files = ReportOnMachine();
  for (const auto& [account, stored] : LookAtOtherAccounts()) {
    facts.other_ids.push_back({account, system_info::ToUtf8(stored.path), stored.id});
  }
  return facts;
}

}  // namespace deviceid
