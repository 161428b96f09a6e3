#include "inspection/explained_facts.h"

#include <algorithm>
#include <cstddef>

#include "identity/hardware_id_matching.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);

}  // namespace

std::optional<Situation> SituationOf(const LogFacts& facts) {
  const bool known_id = facts.Loaded() != nullptr;
  if (!facts.record_read || (!known_id && facts.id.good != false)) return std::nullopt;
  if (known_id) return *facts.record_read ? Situation::kKnownMachine : Situation::kIdWithoutRecord;
  return *facts.record_read ? Situation::kRecordWithoutId : Situation::kNewMachine;
}

std::optional<std::string> StoredIdOf(const LogFacts& facts) {
  const IdSearch* loaded = facts.Loaded();
  if (loaded == nullptr || !loaded->place) return std::nullopt;
  // Format 1.6 returns the text as it stands.
  return facts.idv2.begun ? RewriteDeviceIdPrefix(loaded->text, kFormat) : loaded->text;
}

std::string ReadingFailureOf(const LogFacts& facts) {
  return facts.readings.empty() ? std::string() : facts.readings.back().failure;
}

std::string MendingOf(const LogFacts& facts) {
  const std::string failure = ReadingFailureOf(facts);
  if (failure.starts_with("Fail to initialize COM")) {
    return "Call from a thread of its own, which has not set up COM.";
  }
  if (!failure.empty()) return "Mend WMI on this PC, which lists the hardware, and call again.";
  return "Find out what keeps the hardware from being read.";
}

std::vector<NamedValue> AllValuesOf(const LogFacts& facts) {
  std::vector<NamedValue> values;
  if (facts.readings.empty()) return values;
  for (const ReadValue& value : facts.readings.back().values) {
    if (!value.text.empty()) values.push_back({value.name, value.text});
  }
  return values;
}

std::vector<Part> ListPresent(const std::vector<NamedValue>& values) {
  std::vector<Part> parts;
  parts.reserve(values.size());
  for (const auto& [name, text] : values) {
    parts.push_back({{name}, std::nullopt, text, PartState::kUnknown});
  }
  return parts;
}

bool AnySerialNumberFailed(const LogFacts& facts) {
  if (facts.readings.empty()) return false;
  const auto& values = facts.readings.back().values;
  return std::any_of(values.begin(), values.end(), [](const ReadValue& value) {
    return !value.failure.empty() &&
           (value.name == PartName::kProduct || value.name == PartName::kBoard);
  });
}

void TellCounts(const std::optional<MatchCounts>& counts, Explanation& explanation) {
  if (!counts) return;
  const std::size_t compared = std::min(counts->stored, counts->runtime);
  const std::size_t needed = RequiredMatches(compared);
  explanation.agree = counts->matches;
  explanation.compared = compared;
  explanation.needed = needed;
  explanation.changes_left = counts->matches > needed ? counts->matches - needed : 0;
}

}  // namespace system_info
