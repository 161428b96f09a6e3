// ExplainLog of explanation.h.

#include <algorithm>
#include <cstddef>
#include <utility>

#include "inspection/explained_facts.h"
#include "inspection/explanation.h"
#include "inspection/log_facts.h"
#include "inspection/saved_log.h"
#include "inspection/stored_bytes.h"
#include "inspection/verdict_rules.h"
#include "inspection/warnings.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);

// Reasons that stand for a damaged record.
constexpr std::string_view kRecordFailures[] = {
    "invalid stoi argument", "stoi argument out of range", "basic_string::resize"};

bool TellsOfCall(const LogFacts& facts) {
  return facts.calls > 0 || facts.end || facts.idv2.begun || facts.record_read ||
         !facts.readings.empty();
}

bool HasFlags(const LogFacts& facts) { return facts.call == "GetHardwareIdMod"; }

// Windows names adapters by GUIDs in braces, and has short serial numbers for volumes.
bool IsFromLinux(const LogFacts& facts) {
  for (const HardwareReading& reading : facts.readings) {
    for (const Adapter& adapter : reading.adapters) return !adapter.name.starts_with("{");
    for (const auto& [name, text] : reading.Listed()) {
      if (name == PartName::kVolume) return text.find('-') != std::string::npos;
    }
  }
  return false;
}

// The id that an id without a record, or a new machine, was given: no line tells it, nor the flags
// of a call that has some. One of them draws a number, or keeps an id.
std::optional<std::string> MadeId(const LogFacts& facts) {
  if (facts.readings.empty() || facts.random) return std::nullopt;
  if (!facts.readings[0].whole || facts.readings[0].untold) return std::nullopt;
  std::string id = MakeDeviceId(facts.readings[0].Joined(), kFormat);
  return HasFlags(facts) && id != StoredIdOf(facts) ? std::nullopt : std::optional(std::move(id));
}

std::optional<std::string> ReturnedId(const LogFacts& facts) {
  if (!facts.end) return std::nullopt;
  switch (*facts.end) {
    case CallEnd::kHardwareHasChanged:
    case CallEnd::kFromHardware:
      return facts.runtime_id;
    case CallEnd::kMadeAnew:
    case CallEnd::kNewMachine:
      return MadeId(facts);
    case CallEnd::kNoId:
    case CallEnd::kHardwareIsUnknown:
    case CallEnd::kRefused:
    case CallEnd::kFailed:
      return std::nullopt;
    default:
      return StoredIdOf(facts);
  }
}

// Values that no reading gave. They were stored if that explains the lengths of the lists.
void AddMissing(const LogFacts& facts, std::vector<Part>& parts) {
  if (facts.readings.empty() || !facts.counts) return;
  std::vector<PartName> missing;
  for (const ReadValue& value : facts.readings.back().values) {
    if (value.text.empty() || value.text == "0") missing.push_back(value.name);
  }
  if (facts.counts->runtime + missing.size() != facts.counts->stored) return;
  for (const PartName name : missing) {
    const auto behind = std::find_if(
        parts.begin(), parts.end(), [name](const Part& part) { return part.names.front() > name; });
    parts.insert(behind, {{name}, std::nullopt, std::nullopt, PartState::kGone});
  }
}

std::vector<Part> PartsOf(const LogFacts& facts) {
  if (facts.readings.empty()) return {};
  std::vector<Part> parts =
      ListPresent(facts.idv2.begun ? facts.readings.back().Listed() : AllValuesOf(facts));
  AddMissing(facts, parts);
  const auto& counts = facts.counts;
  // Where all agree, the stored values are known, too.
  if (counts && counts->matches == counts->stored && counts->stored == counts->runtime) {
    for (Part& part : parts) {
      part.stored = part.present;
      part.state = PartState::kSame;
    }
  }
  return parts;
}

// What is wrong with the text of a search, or nothing.
std::string DescribeBadText(const IdSearch& search, const std::string& name) {
  if (!search.place || search.good != false) return {};
  return name + " was damaged (" + JudgeIdBytes(search.text).damage + ")";
}

void DescribeSearches(const LogFacts& facts, Findings& findings) {
  const std::string bad_idv2 = DescribeBadText(facts.idv2, "device.idv2");
  const std::string bad = bad_idv2.empty() ? DescribeBadText(facts.id, "device.id") : bad_idv2;
  findings.words["older_id"] = bad_idv2 + ", so the older id of device.id stood in for it";
  findings.older_id = !bad_idv2.empty() && facts.id.good == true;
  findings.words["id_trouble"] = bad.empty() ? "No file held an id" : bad;
  findings.words["nothing_stored"] =
      bad.empty() ? "Nothing was stored" : bad + ", and no record could be read";
  findings.words["record_trouble"] = "There was no record hid_settings that could be read";
}

// True for the hardware as an account reads it that is not root: other values are there, and fewer
// than the record has, if that was looked at.
bool LacksSerialNumbers(const LogFacts& facts) {
  if (facts.readings.empty() || AnySerialNumberFailed(facts)) return false;
  const std::vector<NamedValue> values = facts.readings.back().Listed();
  const bool fewer = !facts.counts || facts.counts->stored > facts.counts->runtime;
  return fewer && !values.empty() &&
         std::none_of(values.begin(), values.end(), [](const NamedValue& value) {
           return value.name == PartName::kProduct || value.name == PartName::kBoard;
         });
}

std::string DescribeFailure(const LogFacts& facts) {
  const std::string reason = facts.failure.value_or("");
  return reason.empty() ? "result 4" : "result 3: " + reason;
}

void WarnOfLog(const LogFacts& facts, std::vector<Warning>& warnings) {
  if (!facts.ends_in_line) {
    warnings.push_back({"log-cut", "The log ends within a line. What stood behind is not told."});
  }
  if (facts.calls > 1) {
    warnings.push_back({"several-calls", "The log holds " + std::to_string(facts.calls) +
                                             " calls. The last one is explained."});
  }
}

}  // namespace

Explanation ExplainLog(std::string_view bytes) {
  const LogFacts facts = ReadLogFacts(RestoreLog(bytes));
  Explanation explanation;
  explanation.situation = SituationOf(facts);
  explanation.id = ReturnedId(facts);

  Findings findings;
  findings.source = Findings::Source::kLog;
  findings.known_call = TellsOfCall(facts);
  findings.end = facts.end;
  findings.counts = facts.counts;
  findings.random = facts.random;
  findings.flags = HasFlags(facts);
  findings.parts = PartsOf(facts);
  const std::optional<std::string> stored = StoredIdOf(facts);
  const bool young = facts.end == CallEnd::kRecordIsYoung;
  findings.same_id = stored && (young ? facts.runtime_id : explanation.id) == stored;
  findings.other_account = IsFromLinux(facts) && LacksSerialNumbers(facts);
  findings.fatal_record = std::find(std::begin(kRecordFailures), std::end(kRecordFailures),
                                    facts.failure.value_or("")) != std::end(kRecordFailures);
  findings.words = {{"format", facts.format},
                    {"call", facts.call},
                    {"stored_id", stored.value_or("")},
                    {"failure", DescribeFailure(facts)},
                    {"reason", facts.failure.value_or("")},
                    {"reading_failure", ReadingFailureOf(facts)},
                    {"mend_hardware", MendingOf(facts)},
                    {"new_id", std::string(facts.random ? "a random id" : "a new id") +
                                   (stored ? " in place of " + *stored : "")}};
  DescribeSearches(facts, findings);
  DescribeComparison(findings);

  Decide(findings, explanation);
  explanation.older_id = findings.older_id;
  explanation.parts = findings.parts;
  TellCounts(facts.counts, explanation);
  WarnOfLog(facts, explanation.warnings);
  WarnOfParts(explanation.parts, explanation.warnings);
  WarnOfCall(facts, explanation.warnings);
  return explanation;
}

}  // namespace system_info
