#include "tools/deviceid/stored_ids.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "platform/accounts.h"
#include "platform/file_attributes.h"
#include "platform/native_paths.h"
#include "storage/device_id_copies.h"
#include "support/folder_paths.h"
#include "values/device_id.h"

namespace deviceid {
namespace {

using system_info::HidFormatVersion;

// As much as the library reads of an id file.
constexpr std::size_t kLargestIdFile = 8191;

constexpr std::array<HidFormatVersion, 2> kStoredFormats = {HidFormatVersion(2, 0),
                                                            HidFormatVersion(1, 6)};

// The id of a file of format 2.0 is kept with the prefix of the format before.
StoredId LookAt(const std::filesystem::path& path, HidFormatVersion version) {
  const std::string text = system_info::ReadBytes(path, kLargestIdFile).value_or("");
  if (!system_info::IsValidDeviceId(text)) return {path, ""};
  const bool rewritten = version >= kStoredFormats[0];
  return {path, rewritten ? system_info::RewriteDeviceIdPrefix(text, version) : text};
}

const StoredId* FindId(const std::vector<StoredId>& ids, const std::string& id) {
  const auto found =
      std::find_if(ids.begin(), ids.end(), [&](const StoredId& stored) { return stored.id == id; });
  return found == ids.end() ? nullptr : &*found;
}

}  // namespace

std::vector<StoredId> LookAtStoredIds() {
  std::vector<StoredId> ids;
  for (const HidFormatVersion version : kStoredFormats) {
    for (const std::string& path :
         {system_info::CommonDeviceIdPath(version), system_info::UserDeviceIdPath(version)}) {
      ids.push_back(LookAt(system_info::FromSystemText(path), version));
    }
  }
  return ids;
}

std::vector<OtherId> LookAtOtherAccounts() {
  std::vector<OtherId> others;
  const auto folder = system_info::FromSystemText(system_info::CommonFolderPath(false)).filename();
  for (const auto& [account, root] : system_info::OtherUserRoots()) {
    for (const HidFormatVersion version : kStoredFormats) {
      const auto path = root / folder / system_info::DeviceIdFileName(version);
      StoredId stored = LookAt(path, version);
      if (!stored.id.empty()) others.push_back({account, std::move(stored)});
    }
  }
  return others;
}

std::vector<OtherId> IdsTakenAway(const std::vector<system_info::FileChange>& changes) {
  std::vector<OtherId> taken;
  if (!system_info::PresentAccount().privileged) return taken;
  const auto common = system_info::FromSystemText(system_info::CommonFolderPath(false));
  const std::vector<OtherId> others = LookAtOtherAccounts();
  for (const system_info::FileChange& change : changes) {
    if (change.kind != system_info::FileChange::Kind::kFileWritten) continue;
    const auto path = system_info::FromSystemText(change.path);
    if (path.parent_path() != common || !system_info::IsValidDeviceId(change.content)) continue;
    for (const OtherId& other : others) {
      const bool same_file = path.filename() == other.stored.path.filename();
      if (!same_file || change.content.substr(4) == other.stored.id.substr(4)) continue;
      taken.push_back(other);
    }
  }
  return taken;
}

std::string DescribeChange(const std::vector<StoredId>& before,
                           const std::vector<StoredId>& after) {
  std::string line;
  const auto say = [&line](std::initializer_list<std::string_view> words) {
    if (!line.empty()) line += "; ";
    for (const std::string_view word : words) line += word;
  };
  for (std::size_t i = 0; i < after.size(); ++i) {
    const std::string& old_id = before[i].id;
    const std::string& id = after[i].id;
    const std::string place = system_info::ToUtf8(after[i].path);
    if (old_id == id) continue;
    const StoredId* moved_from = id.empty() ? nullptr : FindId(before, id);
    const bool moved = moved_from != nullptr && FindId(after, id) == &after[i] &&
                       after[static_cast<std::size_t>(moved_from - before.data())].id.empty();
    const bool moved_away = id.empty() && FindId(after, old_id) != nullptr;
    if (moved_away) continue;
    if (id.empty()) {
      say({"removed ", old_id, " from ", place});
    } else if (moved) {
      say({"moved ", id, " from ", system_info::ToUtf8(moved_from->path), " to ", place});
    } else if (old_id.empty()) {
      say({"stored ", id, " in ", place});
    } else {
      say({"replaced ", old_id, " by ", id, " in ", place});
    }
  }
  return line;
}

}  // namespace deviceid
