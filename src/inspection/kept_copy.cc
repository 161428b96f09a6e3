// CompareWithKept of explanation.h.

#include <array>
#include <utility>

#include "inspection/explanation.h"
#include "inspection/state_folders.h"

namespace system_info {
namespace {

struct FileOfState {
  const char* name;
  StoredFile StateFolder::*file;
};

constexpr std::array<FileOfState, 3> kFiles = {{{"device.idv2", &StateFolder::idv2},
                                                {"device.id", &StateFolder::id},
                                                {"hid_settings", &StateFolder::record}}};

void AddIfDifferent(const std::string& what, const std::optional<std::string>& kept,
                    const std::optional<std::string>& present,
                    std::vector<Difference>& differences) {
  if (kept != present) differences.push_back({what, kept, present});
}

// What there is of a file, in a word or two. A search for an id leaves an empty file behind, which
// is as good as none.
std::optional<std::string> DescribeId(const StoredFile& file) {
  if (file.state == StoredFile::State::kUnreadable) return "unreadable";
  const IdContent content = JudgeIdBytes(file.bytes);
  if (content.state == ContentState::kEmpty) return std::nullopt;
  return content.state == ContentState::kGood ? content.id : "damaged (" + content.damage + ")";
}

std::optional<std::string> DescribeRecord(const StoredFile& file) {
  if (file.state == StoredFile::State::kUnreadable) return "unreadable";
  if (file.state == StoredFile::State::kMissing) return std::nullopt;
  const RecordContent content = DecodeRecord(file.bytes);
  if (content.state != ContentState::kGood) return TextOf(content.state);
  return "a record of " + *content.device_id + ", " + std::to_string(content.parts.size()) +
         (content.parts.size() == 1 ? " part" : " parts");
}

// The first copy that is there counts, as for a call.
const StoredFile& FirstOf(const std::vector<StateFolder>& folders, StoredFile StateFolder::*file) {
  for (const StateFolder& folder : folders) {
    if (!(folder.*file).bytes.empty()) return folder.*file;
  }
  return folders.front().*file;
}

// What the parts are now: those of the machine, or of a copied folder those of its record.
std::vector<NamedValue> PresentValues(const std::vector<Part>& parts) {
  std::vector<NamedValue> values;
  for (const Part& part : parts) {
    const auto& text =
        part.state == PartState::kUnknown && part.stored ? part.stored : part.present;
    if (text && !part.names.empty()) values.push_back({part.names.front(), *text});
  }
  return values;
}

}  // namespace

void CompareWithKept(Explanation& explanation, const std::vector<StateFolder>& present,
                     const StateFolder& kept) {
  std::vector<Difference> differences;
  const std::vector<StateFolder> kept_folders = {kept};
  const auto kept_id = FindCountingId(kept);
  AddIfDifferent("id", kept_id ? std::optional(kept_id->id) : std::nullopt, explanation.id,
                 differences);
  for (const auto& [name, file] : kFiles) {
    const auto describe = file == &StateFolder::record ? DescribeRecord : DescribeId;
    AddIfDifferent(name, describe(kept.*file), describe(FirstOf(present, file)), differences);
  }
  if (const auto record = CountingRecord(kept_folders)) {
    for (const Part& part : CompareParts(record->parts, PresentValues(explanation.parts))) {
      AddIfDifferent(NameOf(part), part.stored, part.present, differences);
    }
  }
  explanation.against = std::move(differences);
}

}  // namespace system_info
