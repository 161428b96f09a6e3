#include "inspection/state_folders.h"

#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);
constexpr std::uint64_t kTenDays = 864'000;

bool IsRead(const StoredFile& file) { return file.state == StoredFile::State::kRead; }

std::string Place(const StateFolder& folder) {
  return folder.path.empty() ? "" : " in " + folder.path;
}

RecordSummary Summarize(const RecordContent& content, const StateFolder& folder) {
  RecordSummary record;
  record.date = *content.date;
  // A stored date can be any number.
  record.compared_from =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(record.date) + kTenDays);
  record.folder = folder.kind;
  record.path = folder.path;
  record.type = *content.type;
  record.id = *content.device_id;
  record.format = *content.version;
  record.parts = content.parts;
  record.trailing_bytes = content.trailing_bytes + folder.record.unread;
  record.damage = content.damage;
  return record;
}

std::string DescribeBadFile(const StoredFile& file, const std::string& name) {
  if (file.state == StoredFile::State::kUnreadable)
    return name + " cannot be read (" + file.why + ")";
  if (!IsRead(file)) return {};
  const IdContent content = JudgeIdBytes(file.bytes);
  return content.state == ContentState::kDamaged ? name + " is damaged (" + content.damage + ")"
                                                 : "";
}

}  // namespace

std::optional<RecordSummary> CountingRecord(const std::vector<StateFolder>& folders) {
  for (const StateFolder& folder : folders) {
    if (!IsRead(folder.record)) continue;
    const RecordContent content = DecodeRecord(folder.record.bytes);
    if (content.use == RecordUse::kRead) return Summarize(content, folder);
  }
  return std::nullopt;
}

std::optional<CountingId> FindCountingId(const StateFolder& folder) {
  for (const auto file : {&StateFolder::idv2, &StateFolder::id}) {
    const IdContent content = JudgeIdBytes((folder.*file).bytes);
    if (content.state != ContentState::kGood) continue;
    return CountingId{RewriteDeviceIdPrefix(content.id, kFormat), file == &StateFolder::id};
  }
  return std::nullopt;
}

std::optional<OtherId> FindOtherId(const std::vector<StateFolder>& folders,
                                   StoredFile StateFolder::*file) {
  std::string first;
  for (const StateFolder& folder : folders) {
    const IdContent content = JudgeIdBytes((folder.*file).bytes);
    if (content.state != ContentState::kGood) continue;
    const std::string id = RewriteDeviceIdPrefix(content.id, kFormat);
    if (!first.empty() && id != first) return OtherId{id, folder.path};
    first = id;
  }
  return std::nullopt;
}

std::string DescribeBadId(const std::vector<StateFolder>& folders, bool with_older) {
  for (const StateFolder& folder : folders) {
    std::string bad = DescribeBadFile(folder.idv2, "device.idv2" + Place(folder));
    if (bad.empty() && with_older) bad = DescribeBadFile(folder.id, "device.id" + Place(folder));
    if (!bad.empty()) return bad;
  }
  return {};
}

std::string DescribeBadRecord(const std::vector<StateFolder>& folders) {
  for (const StateFolder& folder : folders) {
    const std::string name = "The record" + Place(folder);
    if (folder.record.state == StoredFile::State::kUnreadable) {
      return name + " cannot be read (" + folder.record.why + ")";
    }
    if (!IsRead(folder.record)) continue;
    const RecordContent content = DecodeRecord(folder.record.bytes);
    if (content.state == ContentState::kEmpty) return name + " is empty";
    if (content.state == ContentState::kDamaged) {
      return name + " is damaged (" + content.damage + ")";
    }
  }
  return {};
}

std::optional<FatalRecord> FindFatalRecord(const std::vector<StateFolder>& folders) {
  for (const StateFolder& folder : folders) {
    if (!IsRead(folder.record)) continue;
    const RecordContent content = DecodeRecord(folder.record.bytes);
    if (content.use == RecordUse::kFatal) return FatalRecord{&folder, content};
    if (content.use == RecordUse::kRead) break;
  }
  return std::nullopt;
}

}  // namespace system_info
