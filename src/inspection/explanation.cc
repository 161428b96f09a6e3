#include "inspection/explanation.h"

#include <algorithm>
#include <utility>

#include "inspection/explained_facts.h"
#include "inspection/log_facts.h"
#include "inspection/state_folders.h"
#include "inspection/stored_bytes.h"
#include "inspection/verdict_rules.h"
#include "inspection/warnings.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);
constexpr std::int32_t kRandomType = 1;

LogFacts FactsOf(const PlayedCall& call) {
  LogFacts facts = ReadLogFacts(call.log);
  const bool told = facts.end == CallEnd::kNoId || facts.end == CallEnd::kHardwareIsUnknown;
  // Without memory a failure leaves no line.
  if (call.result == HidResult::StandardFailure ||
      (call.result == HidResult::UnexpectedFailure && !told)) {
    facts.end = CallEnd::kFailed;
  }
  return facts;
}

std::string DescribeFailure(int result, const LogFacts& facts) {
  const std::string reason = facts.failure.value_or("");
  return "result " + std::to_string(result) + (reason.empty() ? "" : ": " + reason);
}

CallOutcome OutcomeOf(const PlayedCall& call) {
  return {static_cast<int>(call.result), call.random ? std::nullopt : call.id, call.random};
}

// The list of the machine with the names that its log tells, or none if it could not be listed.
std::optional<std::vector<NamedValue>> NameHardware(const MachineState& machine) {
  if (!machine.hardware) return std::nullopt;
  const LogFacts facts = ReadLogFacts(machine.hardware_log);
  std::vector<NamedValue> named;
  if (!facts.readings.empty()) named = facts.readings.back().Listed();
  if (named.size() != machine.hardware->size()) {
    // A value is too long for a line. Order alone has to do.
    named.resize(std::min<std::size_t>(machine.hardware->size(), 4));
    for (std::size_t i = 0; i < named.size(); ++i) named[i].name = static_cast<PartName>(i);
  }
  for (std::size_t i = 0; i < named.size(); ++i) named[i].text = (*machine.hardware)[i];
  return named;
}

void TellOtherAccount(const std::vector<Part>& parts, std::vector<Warning>& warnings) {
  std::string values;
  for (const Part& part : parts) {
    if (part.state != PartState::kGone || !IsSerialNumber(part) || !part.stored) continue;
    values +=
        (values.empty() ? "" : " and ") + ("the " + NameOf(part)) + " \"" + *part.stored + "\"";
  }
  if (!values.empty()) warnings.push_back({"other-account", "Root reads " + values + "."});
}

// The words for what is missing or damaged.
void DescribeFiles(const std::vector<StateFolder>& folders, Findings& findings) {
  auto& words = findings.words;
  const std::string bad_id = DescribeBadId(folders, true);
  const std::string bad_record = DescribeBadRecord(folders);
  words["id_trouble"] = bad_id.empty() ? "No file holds an id" : bad_id;
  words["record_trouble"] = bad_record.empty() ? "The record hid_settings is missing" : bad_record;
  words["nothing_stored"] = "Nothing is stored";
  if (!bad_id.empty()) {
    words["nothing_stored"] =
        bad_id + (bad_record.empty() ? ", and there is no record" : ". " + bad_record);
  }
  if (bad_id.empty() && !bad_record.empty())
    words["nothing_stored"] = bad_record + ", and no id is stored";
  words["older_id"] =
      DescribeBadId(folders, false) + ", so the older id of device.id stands in for it";
  if (const auto fatal = FindFatalRecord(folders)) {
    findings.fatal_record = findings.end == CallEnd::kFailed;
    words["record_folder"] = fatal->folder->path;
    words["record_damage"] = fatal->content.damage;
  }
}

void DescribeRecord(const std::optional<RecordSummary>& record, Findings& findings) {
  if (!record) return;
  findings.words["record_id"] = record->id;
  findings.words["record_damage"] = record->damage;
  findings.words["record_folder"] = record->path;
}

// Where the stored id comes from.
void LocateId(const std::vector<StateFolder>& folders, const LogFacts& facts,
              Explanation& explanation) {
  explanation.id = StoredIdOf(facts);
  if (!explanation.id) return;
  for (const StateFolder& folder : folders) {
    const bool common = folder.kind == StateFolder::Kind::kCommon;
    if (facts.Loaded()->place != (common ? Place::kCommon : Place::kUser)) continue;
    explanation.id_folder = folder.path;
    explanation.id_folder_kind = folder.kind;
  }
}

// On Linux the serial numbers are all there or all missing, and their lines say nothing of a
// failure. Windows shows them to every account.
void FindAccounts(const MachineState& machine, const LogFacts& next, Findings& findings) {
  if (machine.windows || !machine.hardware || machine.hardware->empty()) return;
  const PartState one_sided = machine.administrator ? PartState::kNew : PartState::kGone;
  const bool told = std::any_of(
      findings.parts.begin(), findings.parts.end(),
      [&](const Part& part) { return part.state == one_sided && IsSerialNumber(part); });
  const bool both_sides = std::any_of(
      findings.parts.begin(), findings.parts.end(),
      [&](const Part& part) { return part.state != one_sided && IsSerialNumber(part); });
  // The record of an ordinary account holds nothing that root does not read.
  const bool foreign = machine.administrator &&
                       std::any_of(findings.parts.begin(), findings.parts.end(),
                                   [](const Part& part) { return part.state == PartState::kGone; });
  findings.other_account = told && !both_sides && !foreign && !AnySerialNumberFailed(next);
}

// Where the log of an old format's call has values, they are told; there is nothing beside them.
std::vector<Part> SetPartsSideBySide(const MachineState& machine, const LogFacts& next,
                                     const std::optional<RecordSummary>& record) {
  const auto present = NameHardware(machine);
  if (record) return CompareParts(record->parts, present);
  const bool lists = machine.format == kFormat.ToString() || next.readings.empty();
  return ListPresent(lists ? present.value_or(std::vector<NamedValue>()) : AllValuesOf(next));
}

}  // namespace

Explanation ExplainMachine(const MachineState& machine) {
  const LogFacts next = FactsOf(machine.next);
  const LogFacts recheck = machine.recheck ? FactsOf(*machine.recheck) : LogFacts();
  Explanation explanation;
  explanation.next = OutcomeOf(machine.next);
  if (machine.recheck) explanation.recheck = OutcomeOf(*machine.recheck);
  explanation.situation = SituationOf(next);
  LocateId(machine.folders, next, explanation);
  if (next.record_read == true) explanation.record = CountingRecord(machine.folders);
  explanation.due = next.end != CallEnd::kRecordIsYoung;

  Findings findings;
  findings.end = next.end;
  findings.recheck = recheck.end;
  findings.counts = recheck.counts ? recheck.counts : next.counts;
  findings.parts = SetPartsSideBySide(machine, next, explanation.record);
  const PlayedCall& deciding =
      explanation.due || !machine.recheck ? machine.next : *machine.recheck;
  findings.random = deciding.random;
  findings.same_id = !deciding.random && deciding.id && deciding.id == explanation.id;
  FindAccounts(machine, next, findings);
  findings.words = {{"format", machine.format},
                    {"id_folder", explanation.id_folder},
                    {"stored_id", explanation.id.value_or("")},
                    {"new_id", deciding.random ? "a random id" : "a new id"},
                    {"reading_failure", ReadingFailureOf(explanation.due ? next : recheck)},
                    {"mend_hardware", MendingOf(explanation.due ? next : recheck)},
                    {"failure", DescribeFailure(static_cast<int>(deciding.result),
                                                explanation.due ? next : recheck)}};
  DescribeRecord(explanation.record, findings);
  DescribeFiles(machine.folders, findings);
  const bool older = next.Loaded() == &next.id && next.idv2.begun;
  findings.older_id = older && !DescribeBadId(machine.folders, false).empty();
  const auto file = next.Loaded() == &next.id ? &StateFolder::id : &StateFolder::idv2;
  if (const auto other = FindOtherId(machine.folders, file); next.Loaded() && other) {
    findings.words["other_id"] = other->id;
    findings.words["other_folder"] = other->path;
  }
  DescribeComparison(findings);

  Decide(findings, explanation);
  explanation.older_id = findings.older_id;
  explanation.parts = findings.parts;
  TellCounts(findings.counts, explanation);
  if (findings.other_account && !machine.administrator) {
    TellOtherAccount(findings.parts, explanation.warnings);
  }
  WarnOfParts(explanation.parts, explanation.warnings);
  WarnOfFiles(machine.folders, explanation.warnings);
  WarnOfCall(next, explanation.warnings);
  return explanation;
}

Explanation ExplainFolder(const StateFolder& folder) {
  const std::vector<StateFolder> folders = {folder};
  Explanation explanation;
  explanation.record = CountingRecord(folders);
  const auto id = FindCountingId(folder);
  if (id) {
    explanation.id = id->id;
    explanation.id_folder = folder.path;
    explanation.id_folder_kind = folder.kind;
  }

  Findings findings;
  findings.source = Findings::Source::kFolder;
  const auto& record = explanation.record;
  if (FindFatalRecord(folders)) {
    findings.end = CallEnd::kFailed;
  } else if (!id) {
    findings.end = record ? CallEnd::kNoId : CallEnd::kNewMachine;
    explanation.situation = record ? Situation::kRecordWithoutId : Situation::kNewMachine;
  } else if (!record) {
    findings.end = CallEnd::kMadeAnew;
    explanation.situation = Situation::kIdWithoutRecord;
  } else {
    explanation.situation = Situation::kKnownMachine;
    if (record->id != id->id) findings.end = CallEnd::kRecordHasOtherId;
    if (record->type == kRandomType) findings.end = CallEnd::kRecordIsRandom;
  }
  if (record) findings.parts = CompareParts(record->parts, std::nullopt);
  findings.older_id = id && id->older && !DescribeBadId(folders, false).empty();
  findings.words["stored_id"] = explanation.id.value_or("");
  DescribeRecord(record, findings);
  DescribeFiles(folders, findings);

  Decide(findings, explanation);
  explanation.older_id = findings.older_id;
  explanation.parts = findings.parts;
  WarnOfParts(explanation.parts, explanation.warnings);
  WarnOfFiles(folders, explanation.warnings);
  return explanation;
}

}  // namespace system_info
