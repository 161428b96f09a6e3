#include "tools/deviceid/repair_plan.h"

#include <algorithm>
#include <optional>

#include "inspection/state_folders.h"
#include "inspection/stored_bytes.h"
#include "support/folder_paths.h"
#include "tools/deviceid/state_folders.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using system_info::ContentState;
using system_info::FileChange;
using system_info::HidFormatVersion;
using system_info::StateFolder;
using system_info::StoredFile;

constexpr HidFormatVersion kReturned(2, 0);
constexpr HidFormatVersion kStored(1, 6);

// Where a record of the library has its id and its type: behind the version text "2.0" and the
// length of the id.
constexpr std::size_t kIdPosition = 11;
constexpr std::size_t kIdLength = 40;
constexpr std::size_t kTypeLength = 4;

RepairPlan Refuse(Status status, const std::string& why) { return {{}, {}, why, status}; }

std::string NameOf(const FileChange& change) {
  return change.path.substr(change.path.rfind(system_info::PathSeparator()) + 1);
}

// The text of the id file that the library reads, if it is a good id.
std::optional<std::string> GoodIdv2(const std::vector<StateFolder>& folders) {
  for (const StateFolder& folder : folders) {
    const auto content = system_info::JudgeIdBytes(folder.idv2.bytes);
    if (content.state == ContentState::kEmpty) continue;
    // A damaged one hides what is in the folder behind it.
    if (content.state == ContentState::kDamaged) return std::nullopt;
    return system_info::RewriteDeviceIdPrefix(content.id, kReturned);
  }
  return std::nullopt;
}

// What the library stores under `name` where nothing stands in the way.
const FileChange* FindStored(const RepairSight& sight, const std::string& name) {
  for (const FileChange& change : sight.fresh.changes) {
    const bool written = change.kind == FileChange::Kind::kFileWritten && !change.content.empty();
    if (written && NameOf(change) == name) return &change;
  }
  return nullptr;
}

// The folders that a call makes, and what it carries over from an older version: once the folder is
// there, no call does that any more.
std::vector<FileChange> MakeFolders(const RepairSight& sight) {
  std::vector<FileChange> changes;
  for (const auto* call : {&sight.fresh, &sight.next}) {
    for (const FileChange& change : call->changes) {
      const bool folder = change.kind == FileChange::Kind::kFolderMade;
      const bool carried =
          call == &sight.next && !change.content.empty() && NameOf(change) == "device.id";
      const bool known = std::any_of(changes.begin(), changes.end(),
                                     [&](const auto& other) { return other.path == change.path; });
      if ((folder || carried) && !known) changes.push_back(change);
    }
  }
  return changes;
}

// `record` with another id, and with the type of an id that comes from hardware if `generated`.
std::string WithId(std::string record, const std::string& id, bool generated) {
  record.replace(kIdPosition, kIdLength, id);
  if (generated) record.replace(kIdPosition + kIdLength, kTypeLength, kTypeLength, '\0');
  return record;
}

RepairPlan NoFolder(const RepairSight& sight) {
  if (sight.fresh.result != system_info::HidResult::Success) {
    return Refuse(kRefused, "a call fails now whatever is stored; deviceid explain tells why");
  }
  return Refuse(kNoRights, "this account can store an id in neither folder");
}

}  // namespace

RepairPlan PlanRestore(const RepairSight& sight) {
  const auto record = system_info::CountingRecord(sight.folders);
  if (!record) {
    return Refuse(kRefused,
                  "there is no record that an id could come from; a known id is given "
                  "back with deviceid repair keep ID");
  }
  if (!system_info::IsValidDeviceId(record->id)) {
    return Refuse(kRefused, "the record in " + record->path + " holds no good id");
  }
  const std::string id = system_info::RewriteDeviceIdPrefix(record->id, kReturned);
  if (const auto present = GoodIdv2(sight.folders)) {
    if (*present == id) return Refuse(kRefused, "device.idv2 holds the id of the record, " + id);
    return Refuse(kRefused, "device.idv2 holds a good id, " + *present +
                                ", and the record another one, " + id +
                                "; deviceid repair keep ID settles which one stays");
  }
  const FileChange* file = FindStored(sight, "device.idv2");
  if (file == nullptr) return NoFolder(sight);
  RepairPlan plan;
  plan.id = id;
  plan.changes = MakeFolders(sight);
  plan.changes.push_back({FileChange::Kind::kFileWritten, file->path,
                          system_info::RewriteDeviceIdPrefix(id, kStored)});
  return plan;
}

// The record comes first: an id without a record is made anew by whoever calls meanwhile.
RepairPlan PlanKeep(const RepairSight& sight, const std::string& id) {
  const auto& present = sight.present;
  if (present.verdict == system_info::Verdict::kSame && present.id == id) {
    return Refuse(kRefused, id + " is stored, and its record is that of the present hardware");
  }
  const FileChange* file = FindStored(sight, "device.idv2");
  const FileChange* record = FindStored(sight, "hid_settings");
  if (file != nullptr && record == nullptr) {
    return Refuse(kRefused,
                  "the hardware cannot be listed now, and without a list there is no "
                  "record; deviceid explain tells why");
  }
  if (file == nullptr) return NoFolder(sight);
  RepairPlan plan;
  plan.id = id;
  plan.changes = MakeFolders(sight);
  plan.changes.push_back({FileChange::Kind::kFileWritten, record->path,
                          WithId(record->content, id, sight.readable_hardware)});
  plan.changes.push_back({FileChange::Kind::kFileWritten, file->path,
                          system_info::RewriteDeviceIdPrefix(id, kStored)});
  return plan;
}

// The records come last, and of two copies the one that counts: a record without an id gives a host
// result 4 and changes nothing.
RepairPlan PlanAnew(const RepairSight& sight) {
  RepairPlan plan;
  for (const char* name : {"device.id", "device.idv2", "hid_settings"}) {
    for (std::size_t i = sight.folders.size(); i-- > 0;) {
      for (const auto& [stored_name, stored] : kStoredFiles) {
        if (std::string(stored_name) != name) continue;
        if ((sight.folders[i].*stored).state == StoredFile::State::kMissing) continue;
        const std::string path = sight.paths[i] + system_info::PathSeparator() + name;
        plan.changes.push_back({FileChange::Kind::kFileRemoved, path, {}});
      }
    }
  }
  if (!plan.changes.empty()) return plan;
  return Refuse(kRefused, "nothing is stored; the next call makes an id");
}

}  // namespace deviceid
