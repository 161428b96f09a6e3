#include "tools/page/decision_path.h"

#include "inspection/explained_facts.h"

namespace deviceid {
namespace {

using system_info::CallEnd;
using system_info::LogFacts;
using system_info::Situation;

struct Path {
  CallEnd end;
  const char* nodes;
};

constexpr Path kPaths[] = {
    {CallEnd::kRecordIsYoung, "files known young"},
    {CallEnd::kRecordIsRandom, "files known usable renewed"},
    {CallEnd::kRecordHasOtherId, "files known usable renewed"},
    {CallEnd::kHardwareMatches, "files known usable list compare renewed"},
    {CallEnd::kHardwareHasChanged, "files known usable list compare changed"},
    {CallEnd::kHardwareIsUnknown, "files known usable list unknown"},
    {CallEnd::kIdStays, "files id_only kept"},
    {CallEnd::kMadeAnew, "files id_only remade"},
    {CallEnd::kNewMachine, "files nothing made"},
    {CallEnd::kNoId, "files lost"},
};

// By situation, for a call whose end is not known.
const char* PathInto(Situation situation) {
  switch (situation) {
    case Situation::kKnownMachine:
      return "files known";
    case Situation::kIdWithoutRecord:
      return "files id_only";
    case Situation::kNewMachine:
      return "files nothing";
    case Situation::kRecordWithoutId:
      break;
  }
  return "files lost";
}

}  // namespace

std::string PathTo(CallEnd end, bool random) {
  if (end == CallEnd::kNewMachine && random) return "files nothing drawn";
  for (const Path& path : kPaths) {
    if (path.end == end) return path.nodes;
  }
  return {};
}

std::string PathOf(const LogFacts& facts) {
  std::string path = facts.end ? PathTo(*facts.end, facts.random) : std::string();
  if (!path.empty()) return path;
  if (facts.counts) return "files known usable list compare";
  const auto situation = system_info::SituationOf(facts);
  return situation ? PathInto(*situation) : "";
}

}  // namespace deviceid
