// The rules by which facts become a verdict and a sentence: one table.

#ifndef DEVICEID_INSPECTION_VERDICT_RULES_H_
#define DEVICEID_INSPECTION_VERDICT_RULES_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "inspection/log_facts.h"

namespace system_info {

// What the rules look at. Texts that stand in sentences are in `words`, by the names that the
// sentences have for them.
struct Findings {
  enum class Source { kMachine, kFolder, kLog };
  Source source = Source::kMachine;

  std::optional<CallEnd> end;      // Of the call: the next one, or that of the log.
  std::optional<CallEnd> recheck;  // Of a recheck on this machine.
  std::optional<MatchCounts> counts;
  std::vector<Part> parts;

  bool known_call = true;      // The log has lines of a call.
  bool same_id = false;        // The call gives the id that was stored.
  bool random = false;         // The call draws a number.
  bool flags = false;          // The call has flags, which the log does not name.
  bool fatal_record = false;   // A damaged record is why the call fails.
  bool other_account = false;  // Serial numbers are missing that another account reads.
  bool older_id = false;       // The id of device.id stands in for a damaged device.idv2.

  std::map<std::string, std::string> words;
};

// Sets verdict, status, sentence and advice by the first rule that fits.
void Decide(const Findings& findings, Explanation& explanation);

// Makes the words of a comparison that has counts: "change", as in "1 of 4 parts has changed, and
// one change is forgiven."; "agreement", as in "All 4 parts agree."; "reserve", as in "One more
// will give a new id."
void DescribeComparison(Findings& findings);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_VERDICT_RULES_H_
