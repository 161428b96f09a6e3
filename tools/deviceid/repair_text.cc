#include "tools/deviceid/repair_text.h"

#include <nlohmann/json.hpp>

#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/shown_text.h"
#include "inspection/stored_bytes.h"
#include "platform/native_paths.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "values/device_id.h"

namespace deviceid {
namespace {

using system_info::FileChange;
using Json = nlohmann::ordered_json;

// What a file holds, in a few words.
std::string Gist(const std::string& name, const std::string& bytes) {
  if (bytes.empty()) return "nothing";
  if (name != "hid_settings") {
    const auto content = system_info::JudgeIdBytes(bytes);
    return content.state == system_info::ContentState::kGood ? content.id : "a damaged id";
  }
  const auto content = system_info::DecodeRecord(bytes);
  if (content.state != system_info::ContentState::kGood) return "a damaged record";
  const std::string count = std::to_string(content.parts.size());
  return "the record of " + *content.device_id + " with " + count +
         (content.parts.size() == 1 ? " part" : " parts");
}

std::string LineOf(const Effect& effect) {
  std::string line =
      std::string("  ") + effect.action + " " + system_info::Harmless(effect.path) + "\n";
  if (effect.before) line += "    - " + system_info::Harmless(*effect.before) + "\n";
  if (effect.after) line += "    + " + system_info::Harmless(*effect.after) + "\n";
  return line;
}

Json Utf8(const std::string& text) { return system_info::ToUtf8(std::string_view{text}); }

Json ToJson(const Effect& effect) {
  return {{"action", effect.action},
          {"path", Utf8(effect.path)},
          {"before", effect.before ? Utf8(*effect.before) : Json(nullptr)},
          {"after", effect.after ? Utf8(*effect.after) : Json(nullptr)}};
}

Json ToJson(const std::optional<system_info::CallOutcome>& call) {
  if (!call) return nullptr;
  return {{"result", call->result},
          {"id", call->id ? Json(*call->id) : Json(nullptr)},
          {"random", call->random}};
}

}  // namespace

Effect EffectOf(const FileChange& change) {
  const auto path = system_info::FromSystemText(change.path);
  if (change.kind == FileChange::Kind::kFolderMade) {
    return {"make", system_info::ToUtf8(path), std::nullopt, std::nullopt};
  }
  const std::string name = system_info::ToUtf8(path.filename());
  Effect effect{"remove", system_info::ToUtf8(path), std::nullopt, std::nullopt};
  const system_info::StoredFile file = ReadStoredFile(path);
  const bool there = file.state != system_info::StoredFile::State::kMissing;
  if (there) effect.before = Gist(name, file.bytes);
  if (change.kind == FileChange::Kind::kFileRemoved) return effect;
  effect.action = "write";
  effect.after = Gist(name, change.content);
  return effect;
}

std::string ToText(const Announcement& announcement) {
  std::string text = "What will be different:\n\n";
  for (const Effect& effect : announcement.effects) text += LineOf(effect);
  if (announcement.effects.empty()) text += "  at most owners, rights and dates\n";
  for (const auto& [account, stored] : announcement.taken) {
    text += "  The account " + account + " loses the id " + stored.id + " of its own.\n";
  }
  text += "\nWhat deviceid explain will say:\n\n";
  return text + system_info::ToText(announcement.explanation, {WantsColour(), LocalDate});
}

std::string ToJson(const Announcement& announcement, const RepairOutcome& outcome) {
  Json changes = Json::array();
  for (const Effect& effect : announcement.effects) changes.push_back(ToJson(effect));
  Json taken = Json::array();
  for (const auto& [account, stored] : announcement.taken) {
    taken.push_back({{"account", account}, {"id", stored.id}});
  }
  const Json object = {{"schema", 1},
                       {"command", "repair"},
                       {"repair", announcement.repair},
                       {"changes", changes},
                       {"taken", taken},
                       {"explanation", Json::parse(system_info::ToJson(announcement.explanation))},
                       {"done", outcome.done},
                       {"call", ToJson(outcome.call)},
                       {"backup", outcome.backup.empty() ? Json(nullptr) : Utf8(outcome.backup)}};
  return object.dump(2);
}

}  // namespace deviceid
