// What explain.html asks: the program's own code, which the browser runs as WebAssembly.
//
// The page puts the bytes of a question where TakeInput points, asks, and reads the answer, which
// is JSON that ends with a zero byte. The answer stays until the next one.

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "identity/hardware_id_matching.h"
#include "inspection/explained_facts.h"
#include "inspection/explanation.h"
#include "inspection/explanation_json.h"
#include "inspection/hardware_parts.h"
#include "inspection/log_entries.h"
#include "inspection/log_facts.h"
#include "inspection/saved_log.h"
#include "inspection/shown_text.h"
#include "inspection/verdict_rules.h"
#include "tools/page/decision_path.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using Json = nlohmann::ordered_json;
using system_info::CallEnd;
using system_info::Explanation;
using system_info::NamedValue;
using system_info::PartName;
using system_info::Verdict;

std::string input;
std::string answer;

const char* Answer(std::string text) {
  answer = std::move(text);
  return answer.c_str();
}

// A row of docs/log.md.
struct LogRow {
  std::string level;
  std::string text;  // With "<>" for what varies.
  bool of_reader;    // Readers of the hardware and whole calls have lines with the same words.
};

std::vector<LogRow> log_rows;

LogRow MakeRow(std::string_view line) {
  const std::size_t tab = line.find('\t');
  std::string_view rest = line.substr(tab + 1);
  LogRow row = {
      std::string(line.substr(0, tab)), {}, rest.find("<reader>") != std::string_view::npos};
  while (!rest.empty()) {
    const std::size_t open = std::min(rest.find('<'), rest.size());
    row.text += rest.substr(0, open);
    rest.remove_prefix(open);
    if (rest.empty()) break;
    row.text += "<>";
    rest.remove_prefix(rest.find('>') + 1);
  }
  return row;
}

bool Fits(const LogRow& row, const std::string& level, std::string_view message) {
  const auto found = system_info::MatchLogText(row.text, message);
  if (!found || row.level != level) return false;
  return !row.of_reader || found->front().starts_with("GetWmi");
}

std::optional<std::size_t> FindRow(const std::string& level, std::string_view message) {
  for (std::size_t i = 0; i < log_rows.size(); ++i) {
    if (Fits(log_rows[i], level, message)) return i;
  }
  // The lists of adapters go on behind their first line.
  const std::size_t line_end = message.find('\n');
  if (line_end == std::string_view::npos) return std::nullopt;
  return FindRow(level, message.substr(0, line_end));
}

Json Entries(std::string_view log) {
  Json entries = Json::array();
  for (const auto& [time, level, message] : system_info::ParseLog(log)) {
    const auto row = FindRow(level, message);
    entries.push_back({{"time", time},
                       {"level", level},
                       {"message", system_info::ToUtf8(message)},
                       {"row", row ? Json(*row) : Json(nullptr)}});
  }
  return entries;
}

// The explanation with what its JSON leaves to the reader, and with the details of its source.
std::string Told(const Explanation& explanation, const std::string& path, const char* name,
                 const Json& details) {
  Json told;
  told["label"] = system_info::LabelOf(explanation.verdict, explanation.status);
  told["status"] = explanation.status;
  told["path"] = path;
  told[name] = details;
  return R"({"explanation":)" + ToJson(explanation) + "," + told.dump().substr(1);
}

Verdict VerdictOf(const Json& explained) {
  const std::string text = explained.value("verdict", Json()).dump();
  auto verdict = Verdict::kSame;
  while (verdict != Verdict::kUndecided && text != Json(TextOf(verdict)).dump()) {
    verdict = static_cast<Verdict>(static_cast<int>(verdict) + 1);
  }
  return verdict;
}

// What an explanation in JSON says of the next call, where its verdict alone does not say enough.
struct NextCall {
  bool known = false;
  bool fails = false;
  bool lists_nothing = false;  // Result 4, of this call or of a recheck.
  bool random = false;
  bool keeps_id = false;
  bool any_part = false;
  bool enough_agree = true;
};

NextCall NextCallOf(const Json& explained) {
  NextCall call;
  const Json next = explained.value("next", Json());
  call.known = next.is_object();
  if (!call.known) return call;
  call.fails = next.value("result", Json()) != 0;
  for (const char* name : {"next", "recheck"}) {
    const Json outcome = explained.value(name, Json());
    call.lists_nothing |= outcome.is_object() && outcome.value("result", Json()) == 4;
  }
  call.random = next.value("random", Json()) == true;
  call.keeps_id = next.value("id", Json()) == explained.value("id", Json());
  const Json agree = explained.value("agree", Json());
  call.enough_agree = !agree.is_number() || agree >= explained.value("needed", Json());
  for (const Json& part : explained.value("parts", Json::array())) {
    call.any_part |= part.is_object() && part.value("present", Json()).is_string();
  }
  return call;
}

int StatusOf(Verdict verdict, const NextCall& next) {
  switch (verdict) {
    case Verdict::kWillChange:
    case Verdict::kChangesNow:
      return 10;
    case Verdict::kMadeAnew:
      return next.known && next.keeps_id ? 0 : 10;
    case Verdict::kCannotCompare:
      return next.fails ? 20 : 10;
    case Verdict::kFromHardware:
      return next.random ? 10 : 0;
    case Verdict::kNoId:
    case Verdict::kFailed:
      return 20;
    default:
      return 0;
  }
}

// How the next comparison ends, or the next call where none is made.
std::optional<CallEnd> EndOf(Verdict verdict, const NextCall& next) {
  switch (verdict) {
    case Verdict::kSame:
    case Verdict::kForgiven:
      return next.enough_agree ? CallEnd::kHardwareMatches : CallEnd::kHardwareHasChanged;
    case Verdict::kNotCompared:
      return CallEnd::kRecordHasOtherId;
    case Verdict::kNewMachine:
      return CallEnd::kNewMachine;
    case Verdict::kMadeAnew:
      if (!next.known) return std::nullopt;
      return next.keeps_id && !next.any_part ? CallEnd::kIdStays : CallEnd::kMadeAnew;
    case Verdict::kWillChange:
    case Verdict::kChangesNow:
      return CallEnd::kHardwareHasChanged;
    case Verdict::kCannotCompare:
      return next.lists_nothing ? std::optional(CallEnd::kHardwareIsUnknown) : std::nullopt;
    case Verdict::kNoId:
      return CallEnd::kNoId;
    default:
      return std::nullopt;
  }
}

// The PC on which parts are played, its values before and after a change.
struct PlayedPart {
  PartName name;
  const char* stored;
  const char* changed;
};

constexpr PlayedPart kPlayedParts[] = {
    {PartName::kVolume, "1234abcd", "c0ffee07"},
    {PartName::kProduct, "pf0xyz", "pf1abc"},
    {PartName::kBoard, "board7", "board8"},
    {PartName::kNetwork, "00:1a:2b:c3:d4:0f", "00:1a:2b:77:88:99"},
};

enum class Change { kSame, kChanged, kGone };

struct PlayedMachine {
  std::vector<std::string> stored;
  std::vector<NamedValue> present;
  std::string stored_id;
  std::string present_id;
};

PlayedMachine MakeMachine(const std::vector<Change>& changes) {
  PlayedMachine machine;
  std::string before;
  std::string now;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    const PlayedPart& part = kPlayedParts[i];
    machine.stored.emplace_back(part.stored);
    before += part.stored;
    if (changes[i] == Change::kGone) continue;
    machine.present.push_back(
        {part.name, changes[i] == Change::kSame ? part.stored : part.changed});
    now += machine.present.back().text;
  }
  constexpr system_info::HidFormatVersion kFormat(2, 0);
  machine.stored_id = system_info::MakeDeviceId(before, kFormat);
  machine.present_id = now.empty() ? "" : system_info::MakeDeviceId(now, kFormat);
  return machine;
}

// The next comparison on a PC with these changes.
Explanation Compare(const PlayedMachine& machine) {
  std::vector<std::string> runtime;
  for (const NamedValue& value : machine.present) runtime.push_back(value.text);
  int matches = 0;
  const bool kept = system_info::MatchHardwareIds(machine.stored, runtime, matches);

  system_info::Findings findings;
  findings.end = kept ? CallEnd::kHardwareMatches : CallEnd::kHardwareHasChanged;
  findings.recheck = findings.end;
  findings.counts = {static_cast<std::size_t>(matches), machine.stored.size(), runtime.size()};
  findings.parts = CompareParts(machine.stored, machine.present);
  findings.random = runtime.empty();
  findings.same_id = machine.present_id == machine.stored_id;
  findings.words["new_id"] = findings.random ? "a random id" : "a new id";
  DescribeComparison(findings);

  Explanation explanation;
  Decide(findings, explanation);
  explanation.advice.clear();  // It is about files that this PC does not have.
  explanation.situation = system_info::Situation::kKnownMachine;
  explanation.id = machine.stored_id;
  explanation.next = {0, kept ? machine.stored_id : machine.present_id, findings.random};
  if (findings.random) explanation.next->id.reset();
  explanation.parts = findings.parts;
  TellCounts(findings.counts, explanation);
  return explanation;
}

Json Place(PartName name, const std::string& text) {
  return {{"name", TextOf(name)}, {"text", text}};
}

// Both lists, place by place, as they are compared.
Json Places(const PlayedMachine& machine) {
  Json places = Json::array();
  for (std::size_t i = 0; i < machine.stored.size(); ++i) {
    const std::string& stored = machine.stored[i];
    Json place = {{"stored", Place(kPlayedParts[i].name, stored)}};
    if (i < machine.present.size()) {
      const auto& [name, text] = machine.present[i];
      int matches = 0;
      system_info::MatchHardwareIds({stored}, {text}, matches);
      place["present"] = Place(name, text);
      place["agrees"] = matches == 1;
    }
    places.push_back(place);
  }
  return places;
}

}  // namespace
}  // namespace deviceid

extern "C" {

// Where the page puts the `size` bytes of its next question.
char* TakeInput(std::size_t size) {
  deviceid::input.resize(size);
  return deviceid::input.data();
}

// Takes the rows of docs/log.md: a line for each, its level, a tab and its text.
void TakeLogRows() {
  deviceid::log_rows.clear();
  for (std::string_view rest = deviceid::input; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    deviceid::log_rows.push_back(deviceid::MakeRow(line));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
  }
}

// Explains a log in the bytes that a host has saved.
const char* ExplainSavedLog() {
  const std::string log = system_info::RestoreLog(deviceid::input);
  const system_info::LogFacts facts = system_info::ReadLogFacts(log);
  return deviceid::Answer(deviceid::Told(system_info::ExplainLog(deviceid::input),
                                         deviceid::PathOf(facts), "entries",
                                         deviceid::Entries(log)));
}

// Says what an explanation in JSON leaves to its reader.
const char* ReadExplanation() {
  using deviceid::Json;
  const Json explained = Json::parse(deviceid::input, nullptr, false);
  if (!explained.is_object()) return deviceid::Answer("null");
  const auto verdict = deviceid::VerdictOf(explained);
  const deviceid::NextCall next = deviceid::NextCallOf(explained);
  const int status = deviceid::StatusOf(verdict, next);
  const auto end = deviceid::EndOf(verdict, next);
  return deviceid::Answer(Json({{"label", system_info::LabelOf(verdict, status)},
                                {"status", status},
                                {"path", end ? deviceid::PathTo(*end, next.random) : ""}})
                              .dump());
}

// Plays the next comparison of a PC. A change is 0 for the same, 1 for changed, 2 for gone.
const char* PlayChanges(int volume, int product, int board, int network) {
  std::vector<deviceid::Change> changes;
  for (const int change : {volume, product, board, network}) {
    changes.push_back(static_cast<deviceid::Change>(change));
  }
  const deviceid::PlayedMachine machine = deviceid::MakeMachine(changes);
  return deviceid::Answer(
      deviceid::Told(deviceid::Compare(machine), {}, "places", deviceid::Places(machine)));
}

}  // extern "C"
