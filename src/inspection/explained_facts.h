// The facts of a log in the terms of an explanation.

#ifndef DEVICEID_INSPECTION_EXPLAINED_FACTS_H_
#define DEVICEID_INSPECTION_EXPLAINED_FACTS_H_

#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "inspection/log_facts.h"

namespace system_info {

std::optional<Situation> SituationOf(const LogFacts& facts);

// The stored id that the call found, in the form in which it returns it.
std::optional<std::string> StoredIdOf(const LogFacts& facts);

// Why the last reading gave nothing.
std::string ReadingFailureOf(const LogFacts& facts);

// What to do about that.
std::string MendingOf(const LogFacts& facts);

// All values of the last reading that are there.
std::vector<NamedValue> AllValuesOf(const LogFacts& facts);

// Values that there is nothing to compare with.
std::vector<Part> ListPresent(const std::vector<NamedValue>& values);

// True if product or board have a line that tells of a failure.
bool AnySerialNumberFailed(const LogFacts& facts);

void TellCounts(const std::optional<MatchCounts>& counts, Explanation& explanation);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_EXPLAINED_FACTS_H_
