#include "tools/deviceid/simulated_machine.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <utility>

#include "inspection/log_facts.h"
#include "platform/accounts.h"
#include "platform/file_rights.h"
#include "platform/native_paths.h"
#include "support/folder_paths.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using system_info::ChangedValues;
using system_info::ChangeMatrix;
using system_info::Explanation;
using system_info::Fate;
using system_info::FileChange;
using system_info::HidFormatVersion;
using system_info::PartName;
using system_info::PlayedCall;
using system_info::PlayedExport;
using system_info::Pretence;
using system_info::StateFolder;
using system_info::StoredFile;

using Kind = Change::Kind;

constexpr HidFormatVersion kNewest(2, 0);
// From here on the network value is that of the chosen adapter.
constexpr HidFormatVersion kFirstWithChosenAdapter(1, 5);
constexpr std::int64_t kSecondsOfDay = 86'400;
constexpr std::size_t kMostDigits = 5;
constexpr std::size_t kLongestText = 255;

struct KindName {
  const char* name;
  Kind kind;
};
constexpr KindName kKinds[] = {{"replace", Kind::kReplace}, {"gone", Kind::kGone},
                               {"new", Kind::kNew},         {"days", Kind::kDays},
                               {"account", Kind::kAccount}, {"restore", Kind::kRestore}};

constexpr std::array<PartName, 4> kParts = {PartName::kVolume, PartName::kProduct, PartName::kBoard,
                                            PartName::kNetwork};

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

[[noreturn]] void RefuseWord(const std::string& word, const std::string& why) {
  throw Failure(kWrongUsage, Quoted(word) + " " + why);
}

Kind ParseKind(const std::string& word, const std::string& name) {
  std::vector<std::string> names;
  for (const KindName& kind : kKinds) {
    if (name == kind.name) return kind.kind;
    names.emplace_back(kind.name);
  }
  RefuseWord(word, "is no change" + Suggestion(name, names));
}

PartName ParsePart(const std::string& word, const std::string& name) {
  std::vector<std::string> names;
  for (const PartName part : kParts) {
    if (name == TextOf(part)) return part;
    names.emplace_back(TextOf(part));
  }
  RefuseWord(word, "names no part" + Suggestion(name, names));
}

bool IsAddress(const std::string& text) {
  constexpr std::string_view kForm = "xx:xx:xx:xx:xx:xx";
  const auto fits = [](char c, char form) {
    return form == 'x' ? std::string_view("0123456789abcdef").find(c) != std::string_view::npos
                       : c == form;
  };
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), fits);
}

std::string InLowerCase(std::string text) {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  std::transform(text.begin(), text.end(), text.begin(), lower);
  return text;
}

void CheckText(Change& change) {
  const std::string& text = change.value;
  const bool plain =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
  if (text.empty() || text.size() > kLongestText || !plain) {
    RefuseWord(change.word, "needs a text of 1 to 255 printable ASCII characters");
  }
  if (change.part != PartName::kNetwork) return;
  change.value = InLowerCase(text);
  if (!IsAddress(change.value)) RefuseWord(change.word, "needs an address like 00:1a:2b:c3:d4:0f");
}

Change ParseChange(const std::string& word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos) RefuseWord(word, "is no change; one is like replace=network");
  Change change;
  change.word = word;
  change.kind = ParseKind(word, word.substr(0, equals));
  change.value = word.substr(equals + 1);
  if (change.kind <= Kind::kNew) {
    const std::size_t colon =
        change.kind == Kind::kNew ? change.value.find(':') : change.value.size();
    change.part = ParsePart(word, change.value.substr(0, colon));
    change.value.erase(0, colon == std::string::npos ? colon : colon + 1);
  }
  const bool number = change.value.find_first_not_of("0123456789") == std::string::npos;
  if (change.kind == Kind::kNew) CheckText(change);
  if (change.kind == Kind::kDays &&
      (!number || change.value.empty() || change.value.size() > kMostDigits)) {
    RefuseWord(word, "needs a number of days from 0 to 99999");
  }
  if (change.kind == Kind::kAccount && change.value != "ordinary") {
    RefuseWord(word, "names no account that can be simulated; account=ordinary does");
  }
  if (change.kind == Kind::kRestore && change.value.empty()) RefuseWord(word, "needs a folder");
  return change;
}

// What can be changed once only.
std::vector<std::string> TopicsOf(const Change& change) {
  if (change.part) return {TextOf(*change.part)};
  if (change.kind == Kind::kDays) return {"days"};
  if (change.kind == Kind::kRestore) return {"restore"};
  return {"account", TextOf(PartName::kProduct), TextOf(PartName::kBoard)};
}

// A value of the same form that no other machine is likely to have.
std::string OtherValue(PartName part, std::string value) {
  if (!IsAddress(value)) return std::string("replaced-") + TextOf(part);
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kOfMaker = 8;
  for (std::size_t i = kOfMaker; i < value.size(); ++i) {
    if (value[i] != ':') value[i] = kDigits[15 - kDigits.find(value[i])];
  }
  return value;
}

ChangedValues ValuesHiddenFromAccounts() {
  const auto privileged = system_info::FindPrivilegedValues();
  ChangedValues hidden;
  if (privileged.product) hidden[PartName::kProduct] = "";
  if (privileged.board) hidden[PartName::kBoard] = "";
  if (privileged.uuid) hidden[PartName::kUuid] = "";
  if (hidden.empty()) {
    throw Failure(kWrongUsage, "every account of this machine reads the same hardware values");
  }
  return hidden;
}

bool IsThere(const StoredFile& file) { return file.state != StoredFile::State::kMissing; }

// Makes the folder and all that are missing above it.
void PlanFolder(const std::string& folder, std::vector<FileChange>& changes) {
  const std::size_t separator = folder.rfind(system_info::PathSeparator());
  std::error_code failure;
  if (std::filesystem::is_directory(system_info::FromSystemText(folder), failure)) return;
  if (separator != std::string::npos && separator > 0) {
    PlanFolder(folder.substr(0, separator), changes);
  }
  changes.push_back({FileChange::Kind::kFolderMade, folder, ""});
}

// False if this account could not even see what stands in the folder.
bool MayEnter(const std::string& folder) {
  const std::string path = system_info::SystemPath(folder);
  const std::size_t separator = folder.rfind(system_info::PathSeparator());
  if (system_info::FolderIdentity(path)) {
    const std::string file = path + system_info::PathSeparator() + kStoredFiles[0].name;
    return system_info::LookUpRights(file).standing != system_info::Standing::kUnknown;
  }
  // One that is missing would be made.
  return separator == std::string::npos || separator == 0 || MayEnter(folder.substr(0, separator));
}

// Puts a kept folder in the place of the first state folder that holds anything.
std::string PlanRestore(const Change& change, std::vector<FileChange>& changes) {
  const StateFolder kept = ReadKeptFolder(system_info::FromUtf8(change.value));
  const std::vector<StateFolder> folders = ReadStateFolders();
  const auto in_use = std::find_if(folders.begin(), folders.end(), [](const StateFolder& folder) {
    return !folder.idv2.bytes.empty() || !folder.id.bytes.empty() || IsThere(folder.record);
  });
  const StateFolder& target = in_use == folders.end() ? folders.front() : *in_use;
  const bool common = target.kind == StateFolder::Kind::kCommon;
  const std::string path =
      common ? system_info::CommonFolderPath(false) : system_info::UserFolderPath(false);
  if (path.empty()) throw Failure(kNoInput, "the system names no folder to restore to");
  if (!MayEnter(path)) throw Failure(kNoRights, "no rights to look into " + target.path);
  PlanFolder(path, changes);
  for (const auto& [name, file] : kStoredFiles) {
    if ((kept.*file).state == StoredFile::State::kUnreadable) {
      throw Failure(kNoRights, std::string(name) + " in " + change.value +
                                   " cannot be read: " + (kept.*file).why);
    }
    const std::string file_path = path + system_info::PathSeparator() + name;
    // Not written over: what is restored has the rights of a new file.
    if (IsThere(target.*file)) changes.push_back({FileChange::Kind::kFileRemoved, file_path, ""});
    if (!IsThere(kept.*file)) continue;
    changes.push_back({FileChange::Kind::kFileWritten, file_path, (kept.*file).bytes});
  }
  return "its files stand in the place of those in " + target.path;
}

ChangeMatrix::Cell Judge(const PlayedCall& call, const std::optional<std::string>& id) {
  ChangeMatrix::Cell cell;
  cell.call = {static_cast<int>(call.result), call.random ? std::nullopt : call.id, call.random};
  if (call.id) cell.fate = !call.random && call.id == id ? Fate::kKept : Fate::kLost;
  return cell;
}

}  // namespace

std::vector<Change> ParseChanges(const std::vector<std::string>& words) {
  std::vector<Change> changes;
  std::map<std::string, std::string> topics;
  for (const std::string& word : words) {
    changes.push_back(ParseChange(word));
    for (const std::string& topic : TopicsOf(changes.back())) {
      const auto [former, first] = topics.emplace(topic, word);
      if (first) continue;
      throw Failure(kWrongUsage, Quoted(former->second) + " and " + Quoted(word) +
                                     " cannot be simulated together");
    }
  }
  return changes;
}

std::vector<std::string> ChangeWords() {
  std::vector<std::string> words;
  for (const char* kind : {"replace=", "gone=", "new="}) {
    for (const PartName part : kParts) {
      words.push_back(std::string(kind) + TextOf(part) + (kind[0] == 'n' ? ":" : ""));
    }
  }
  words.insert(words.end(), {"days=30", "account=ordinary", "restore="});
  return words;
}

SimulatedMachine::SimulatedMachine(const std::string& format) : format_(format) {
  CheckFormat(format);
  ReadValues();
}

void SimulatedMachine::ReadValues() {
  std::string log;
  if (HidFormatVersion(format_) < kFirstWithChosenAdapter) {
    log = PlayCall(PlayedExport::kGet, format_, 0, hardware_).log;
  } else {
    const auto lines = std::make_shared<system_info::HIDLog>();
    try {
      hardware_.GetHardwareIdList(kNewest, lines);
    } catch (...) {
      reading_failure_ = "the reading ended with a failure";
    }
    log = lines->text();
  }
  const auto readings = system_info::ReadLogFacts(log).readings;
  if (readings.empty()) return;
  values_ = readings.back().Listed();
  if (!readings.back().failure.empty()) reading_failure_ = readings.back().failure;
}

std::string SimulatedMachine::ValueOf(PartName part) const {
  const auto found = std::find_if(values_.begin(), values_.end(),
                                  [part](const auto& value) { return value.name == part; });
  return found == values_.end() ? "" : found->text;
}

void SimulatedMachine::PlanPart(const Change& change, Differences& differences) const {
  const std::string name = TextOf(*change.part);
  const std::string present = ValueOf(*change.part);
  if (!reading_failure_.empty()) {
    throw Failure(kWrongUsage, "the hardware cannot be read: " + reading_failure_);
  }
  if (present.empty() && change.kind != Kind::kNew) {
    throw Failure(kWrongUsage, "this account reads no " + name + " here in format " + format_ +
                                   "; new=" + name + ":TEXT gives it one");
  }
  std::string& value = differences.values[*change.part];
  if (change.kind == Kind::kReplace) value = OtherValue(*change.part, present);
  if (change.kind == Kind::kNew) value = change.value;
  std::string text = "the " + name + " is " + Quoted(value);
  if (!present.empty()) text += " in place of " + Quoted(present);
  if (change.kind == Kind::kGone) text = "the " + name + " " + Quoted(present) + " is gone";
  differences.told.push_back({change.word, text});
}

SimulatedMachine::Differences SimulatedMachine::Plan(const std::vector<Change>& changes) const {
  Differences differences;
  for (const Change& change : changes) {
    if (change.part) PlanPart(change, differences);
    std::string text;
    if (change.kind == Kind::kDays) {
      differences.pretence.seconds_later = std::stol(change.value) * kSecondsOfDay;
      text = "the clock is " + change.value + " days ahead";
    }
    if (change.kind == Kind::kAccount) {
      differences.ordinary_account = true;
      differences.values.merge(ValuesHiddenFromAccounts());
      text =
          "an account that reads no serial numbers; its rights and folders are those of this one";
    }
    if (change.kind == Kind::kRestore) text = PlanRestore(change, differences.pretence.changes);
    if (!change.part) differences.told.push_back({change.word, text});
  }
  return differences;
}

Explanation SimulatedMachine::Explain(const std::vector<Change>& changes) {
  return Explain(Plan(changes));
}

Explanation SimulatedMachine::Explain(const Differences& differences) {
  hardware_.Change(differences.values, ValueOf(PartName::kNetwork));
  system_info::MachineState machine = LookAtMachine(format_, hardware_, differences.pretence);
  if (differences.ordinary_account) machine.administrator = false;
  Explanation explanation = ExplainMachine(machine);
  explanation.simulated = differences.told;
  return explanation;
}

PlayedCall SimulatedMachine::Play(PlayedExport which, const ChangedValues& values,
                                  const Pretence& pretence) {
  hardware_.Change(values, ValueOf(PartName::kNetwork));
  return PlayCall(which, format_, 0, hardware_, pretence);
}

ChangeMatrix SimulatedMachine::TryAll(const std::vector<Change>& given) {
  Differences base = Plan(given);
  ChangeMatrix matrix;
  matrix.format = format_;
  matrix.unchanged = Explain(base);
  matrix.id = matrix.unchanged.id;
  if (!matrix.id) {
    const PlayedCall first = Play(PlayedExport::kGet, base.values, base.pretence);
    if (!first.random) matrix.id = first.id;
    matrix.after_first_call = first.id.has_value();
    base.pretence.changes = first.changes;
  }
  for (const auto& [name, text] : values_) {
    if (!base.values.contains(name)) matrix.parts.push_back(name);
  }
  if (matrix.parts.empty()) {
    throw Failure(kWrongUsage, "this machine has no part that could be changed");
  }

  // Formats that store no record have nothing to compare.
  const PlayedExport which =
      HidFormatVersion(format_) < kNewest ? PlayedExport::kGet : PlayedExport::kRecheck;
  const auto change = [&](ChangedValues& values, std::size_t number) {
    const PartName part = matrix.parts[number / 2];
    values[part] = number % 2 == 0 ? OtherValue(part, ValueOf(part)) : "";
  };
  const std::size_t count = 2 * matrix.parts.size();
  matrix.cells.resize(count, std::vector<std::optional<ChangeMatrix::Cell>>(count));
  for (std::size_t row = 0; row < count; ++row) {
    for (std::size_t column = row; column < count; ++column) {
      if (row != column && row / 2 == column / 2) continue;
      ChangedValues values = base.values;
      change(values, row);
      change(values, column);
      const auto cell = Judge(Play(which, values, base.pretence), matrix.id);
      matrix.cells[row][column] = matrix.cells[column][row] = cell;
    }
  }
  return matrix;
}

}  // namespace deviceid
