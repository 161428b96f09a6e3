#include "inspection/case_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "inspection/explanation_json.h"
#include "inspection/redacted_log.h"
#include "inspection/shown_text.h"
#include "inspection/stored_file_report.h"
#include "values/format_version.h"

namespace system_info {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1;
constexpr std::size_t kStart = 64;  // Bytes that show what a file is.

// Members whose texts are words of the program.
constexpr std::string_view kOwnWords[] = {
    "command", "verdict", "situation", "code",          "level", "state", "folder", "role",
    "name",    "date",    "modified",  "compared_from", "what",  "made",  "formats"};
// Members that are a value each.
constexpr std::string_view kValues[] = {"stored", "present", "kept", "id"};

template <std::size_t kSize>
bool IsOneOf(const std::string_view (&names)[kSize], std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// "group staff", or names of accounts with commas between them.
void LearnWriters(std::string_view names, Redactor& redactor) {
  constexpr std::string_view kGroup = "group ";
  while (!names.empty()) {
    std::string_view name = names.substr(0, names.find(", "));
    names.remove_prefix(std::min(names.size(), name.size() + 2));
    if (name.starts_with(kGroup)) name.remove_prefix(kGroup.size());
    redactor.LearnName(name);
  }
}

// Texts of an array belong to the name of the array.
void LearnFromJson(const Json& json, std::string_view name, Redactor& redactor) {
  if (json.is_string()) {
    const auto& text = json.get_ref<const std::string&>();
    if (IsOneOf(kOwnWords, name)) return;
    if (IsOneOf(kValues, name) || name == "parts") redactor.Learn(text);
    if (name == "format" && !IsSupportedVersion(text)) redactor.Learn(text);
    if (name == "owner") redactor.LearnName(text);
    if (name == "other_writers") LearnWriters(text, redactor);
    if (name == "path") redactor.LearnPath(text);
    redactor.LearnFrom(text);
  }
  for (const auto& [key, value] : json.items()) {
    if (json.is_structured()) LearnFromJson(value, json.is_object() ? key : name, redactor);
  }
}

void RedactJson(Json& json, std::string_view name, Redactor& redactor) {
  if (json.is_string() && !IsOneOf(kOwnWords, name)) {
    const std::string text = json.get<std::string>();
    const bool value = IsOneOf(kValues, name) || name == "parts";
    const bool person = name == "owner" || name == "host";
    json = value ? redactor.Value(text) : person ? redactor.Name(text) : redactor.Text(text);
  }
  if (!json.is_structured()) return;
  for (auto item = json.begin(); item != json.end(); ++item) {
    RedactJson(*item, json.is_object() ? item.key() : std::string(name), redactor);
  }
}

void LearnFromFacts(const CaseFacts& facts, Redactor& redactor) {
  const HealthFacts& health = facts.health;
  redactor.LearnName(health.account.name);
  redactor.LearnName(health.system.host);
  redactor.LearnName(health.system.host.substr(0, health.system.host.find('.')));
  for (const FolderFacts& folder : health.folders) {
    redactor.LearnPath(folder.path);
    redactor.LearnPath(folder.old_path);
    redactor.LearnName(folder.attributes.owner);
    LearnWriters(folder.attributes.other_writers, redactor);
    redactor.Learn(folder.old_id);
  }
  for (const OtherAccountId& other : health.other_ids) {
    redactor.LearnName(other.account);
    redactor.LearnPath(other.path);
    redactor.Learn(other.id);
  }
  for (const StoredFileReport& file : health.files) {
    redactor.Learn(file.id.id);
    redactor.Learn(file.id.legible.value_or(""));
    redactor.Learn(file.record.device_id.value_or(""));
    for (const std::string& part : file.record.parts) redactor.Learn(part);
  }
  for (const std::string& value : health.machine.hardware.value_or(std::vector<std::string>())) {
    redactor.Learn(value);
  }
  LearnFromLog(health.machine.hardware_log, redactor);
}

Json DescribeSystem(const SystemFacts& system) {
  return {{"name", ToUtf8(system.name)},
          {"release", ToUtf8(system.release)},
          {"architecture", system.architecture},
          {"host", ToUtf8(system.host)},
          {"container", system.container.empty() ? Json(nullptr) : Json(ToUtf8(system.container))}};
}

// The members of a case file as an explanation.

std::optional<std::string> OptionalText(const Json& json) {
  return json.is_null() ? std::nullopt : std::optional(json.get<std::string>());
}

std::optional<std::size_t> OptionalNumber(const Json& json) {
  return json.is_null() ? std::nullopt : std::optional(json.get<std::size_t>());
}

std::string Shortened(const std::string& text) {
  constexpr std::size_t kLongest = 40;
  return "\"" + text.substr(0, kLongest) + (text.size() > kLongest ? "...\"" : "\"");
}

// The one of the first `count` that has that text.
template <typename Enum>
Enum NamedBy(const std::string& text, int count) {
  for (int i = 0; i < count; ++i) {
    const char* name = TextOf(static_cast<Enum>(i));
    if (name != nullptr && text == name) return static_cast<Enum>(i);
  }
  throw BadCaseFile("it holds " + Shortened(text) + ", which this program does not know");
}

std::int64_t DateOf(const Json& json) {
  std::int64_t date = 0;
  if (json.is_null() || !ParseUtcText(json.get<std::string>(), date)) return 0;
  return date;
}

std::optional<CallOutcome> OutcomeOf(const Json& json) {
  if (json.is_null()) return std::nullopt;
  return CallOutcome{json.at("result").get<int>(), OptionalText(json.at("id")),
                     json.at("random").get<bool>()};
}

std::optional<RecordSummary> RecordOf(const Json& json) {
  if (json.is_null()) return std::nullopt;
  RecordSummary record;
  record.date = DateOf(json.at("date"));
  record.compared_from = DateOf(json.at("compared_from"));
  const bool user = json.at("folder") == "user";
  record.folder = user ? StateFolder::Kind::kUser : StateFolder::Kind::kCommon;
  record.path = json.at("path").get<std::string>();
  record.type = json.at("type").get<std::int32_t>();
  record.id = json.at("id").get<std::string>();
  record.format = json.at("format").get<std::string>();
  record.parts = json.at("parts").get<std::vector<std::string>>();
  return record;
}

Part PartOf(const Json& json) {
  Part part;
  const auto name = json.at("name").get<std::string>();
  if (name != "unnamed") part.names = {NamedBy<PartName>(name, 6)};
  part.stored = OptionalText(json.at("stored"));
  part.present = OptionalText(json.at("present"));
  part.state = NamedBy<PartState>(json.at("state").get<std::string>(), 6);
  return part;
}

// What the program ended with when it explained the machine.
int StatusOf(const Explanation& explanation) {
  const auto& next = explanation.next;
  switch (explanation.verdict) {
    case Verdict::kMadeAnew:
      return next && next->id && next->id == explanation.id ? 0 : 10;
    case Verdict::kWillChange:
    case Verdict::kChangesNow:
      return 10;
    case Verdict::kFromHardware:
      return next && next->random ? 10 : 0;
    case Verdict::kCannotCompare:
      return next && next->result == 0 ? 10 : 20;
    case Verdict::kNoId:
    case Verdict::kFailed:
    case Verdict::kUndecided:
      return 20;
    default:
      return 0;
  }
}

Explanation ExplanationOf(const Json& json, const std::string& made) {
  Explanation explanation;
  const auto verdict = OptionalText(json.at("verdict"));
  if (verdict) explanation.verdict = NamedBy<Verdict>(*verdict, 12);
  explanation.sentence = json.at("sentence").get<std::string>();
  explanation.advice = json.at("advice").get<std::string>();
  const auto situation = OptionalText(json.at("situation"));
  if (situation) explanation.situation = NamedBy<Situation>(*situation, 4);
  explanation.id = OptionalText(json.at("id"));
  explanation.next = OutcomeOf(json.at("next"));
  explanation.recheck = OutcomeOf(json.at("recheck"));
  explanation.record = RecordOf(json.at("record"));
  for (const Json& part : json.at("parts")) explanation.parts.push_back(PartOf(part));
  explanation.agree = OptionalNumber(json.at("agree"));
  explanation.compared = OptionalNumber(json.at("compared"));
  explanation.needed = OptionalNumber(json.at("needed"));
  explanation.changes_left = OptionalNumber(json.at("changes_left"));
  for (const Json& warning : json.at("warnings")) {
    explanation.warnings.push_back(
        {warning.at("code").get<std::string>(), warning.at("text").get<std::string>()});
  }
  explanation.status = StatusOf(explanation);
  if (explanation.record) {
    explanation.due = made >= UtcText(explanation.record->compared_from);
    explanation.id_folder = explanation.record->path;
    explanation.id_folder_kind = explanation.record->folder;
  }
  return explanation;
}

// PowerShell writes UTF-16 to a file.
std::string Decoded(std::string_view bytes) {
  const auto text = FromUtf16(bytes);
  return text ? ToUtf8(*text) : std::string(WithoutByteOrderMark(bytes));
}

Explanation ExplainCase(const Json& object) {
  const auto command = object.at("command").get<std::string>();
  if (command != "report" && command != "explain") {
    throw BadCaseFile("it is the output of " + Shortened(command));
  }
  const int schema = object.at("schema").get<int>();
  if (schema != kSchema) {
    throw BadCaseFile("it has schema " + std::to_string(schema) + ", and this program reads " +
                      std::to_string(kSchema));
  }
  if (command == "explain") return ExplanationOf(object, UtcText(0));
  const auto explain = object.find("explain");
  if (explain != object.end() && !explain->is_null()) {
    return ExplanationOf(*explain, object.value("made", ""));
  }
  return ExplainLog(object.at("log").get<std::string>());
}

}  // namespace

std::string MakeCaseFile(const CaseFacts& facts, Redactor* redactor) {
  const HealthFacts& health = facts.health;
  Json object = {
      {"schema", kSchema},
      {"command", "report"},
      {"made", UtcText(health.now)},
      {"redacted", redactor != nullptr},
      {"versions", {{"program", facts.version}, {"formats", SupportedVersions}}},
      {"system", DescribeSystem(health.system)},
      {"account",
       {{"name", ToUtf8(health.account.name)}, {"privileged", health.account.privileged}}},
      {"explain", Json::parse(ToJson(health.explanation))},
      {"inspect", Json::parse(ToJson(health.files))},
      {"doctor", Json::parse(ToJson(CheckHealth(health)))}};
  if (redactor != nullptr) {
    LearnFromFacts(facts, *redactor);
    if (facts.log) LearnFromLog(*facts.log, *redactor);
    LearnFromJson(object, "", *redactor);
    BindMadeId(health.machine.hardware_log, *redactor);
    if (facts.log) BindMadeId(*facts.log, *redactor);
    RedactJson(object, "", *redactor);
    object["system"]["name"] = redactor->Text(ToUtf8(health.system.name));
    object["account"]["name"] = redactor->Name(ToUtf8(health.account.name));
  }
  if (facts.log) object["log"] = ToUtf8(redactor ? RedactLog(*facts.log, *redactor) : *facts.log);
  return object.dump(2);
}

bool LooksLikeCaseFile(std::string_view bytes) {
  const std::string text = Decoded(bytes.substr(0, kStart));
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  return begin != std::string::npos && text[begin] == '{';
}

Explanation ExplainCaseFile(std::string_view bytes) {
  const std::string text = Decoded(bytes);
  try {
    return ExplainCase(Json::parse(text));
  } catch (const Json::parse_error& error) {
    throw BadCaseFile(error.byte > text.size()
                          ? "it ends in the middle"
                          : "it is damaged at byte " + std::to_string(error.byte));
  } catch (const Json::exception&) {
    throw BadCaseFile("a member is missing, or is not what it should be");
  }
}

}  // namespace system_info
