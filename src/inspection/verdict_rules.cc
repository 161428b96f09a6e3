#include "inspection/verdict_rules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>

#include "identity/hardware_id_matching.h"
#include "values/device_id.h"

namespace system_info {
namespace {

using enum Findings::Source;

std::string Word(const Findings& findings, const std::string& name) {
  const auto word = findings.words.find(name);
  return word == findings.words.end() ? std::string() : word->second;
}

// Conditions beside the ends of calls.
bool AllSame(const Findings& f) {
  return f.counts && f.counts->matches == f.counts->stored && f.counts->stored == f.counts->runtime;
}
bool SameId(const Findings& f) { return f.same_id; }
bool Random(const Findings& f) { return f.random; }
bool Flags(const Findings& f) { return f.flags; }
bool FatalRecord(const Findings& f) { return f.fatal_record; }
bool OlderId(const Findings& f) { return f.older_id; }
bool OtherAccount(const Findings& f) { return f.other_account; }
bool NoGoodRecordId(const Findings& f) { return !IsValidDeviceId(Word(f, "record_id")); }
bool NoCall(const Findings& f) { return !f.known_call; }
bool StoresAnId(const Findings& f) { return Word(f, "format") == "1.6"; }

// A rule fits if all that it names is so. Sentences and advice hold the names of words in braces.
struct VerdictRule {
  Findings::Source source;
  std::optional<CallEnd> end;
  std::optional<CallEnd> recheck;
  bool (*also)(const Findings&);
  Verdict verdict;
  int status;
  const char* sentence;
  const char* advice;
};

constexpr auto kAny = std::nullopt;
constexpr auto kAlways = nullptr;

constexpr const char* kKeepCopy =
    "If this id is to stay, bring the old parts back before the comparison, or make it the id of "
    "the present hardware: deviceid repair keep.";
constexpr const char* kOneKindOfAccount =
    "Keep a copy of {record_folder} now. Let either root alone or ordinary accounts alone ask for "
    "the id: a service that runs as root can hand it on.";
constexpr const char* kWriteRecordId =
    "Put the id of the record, {record_id}, back into its file: deviceid repair restore.";
// A call may give the record to the older id, and then nothing holds the other one any more.
constexpr const char* kWriteRecordIdNow =
    "Before the next call, put the id of the record, {record_id}, back into its file: deviceid "
    "repair restore.";
constexpr const char* kBeginAnew =
    "The record holds no id, either. To begin anew: deviceid repair anew.";
constexpr const char* kMoveRecord =
    "Give the old id back with deviceid repair keep, or begin anew with deviceid repair anew.";
constexpr const char* kMendHardware = "{mend_hardware}";
constexpr const char* kPutRecordBack =
    "If the id is to stay, give it a record before the next call: deviceid repair keep. An id "
    "alone "
    "does not stay.";
constexpr const char* kKeepForHardware =
    "Give the stored id a new record: deviceid repair keep {stored_id}.";
constexpr const char* kWhoChangedFiles =
    "Nothing if an id was put back on purpose. Otherwise find out who changed a file.";

constexpr const char* kExplainThere = "Explain on the machine which id its record holds.";

constexpr VerdictRule kRules[] = {
    // This machine, where the record is compared, or would be.
    {kMachine, kAny, CallEnd::kHardwareMatches, AllSame, Verdict::kSame, 0, "{agreement} {reserve}",
     ""},
    {kMachine, kAny, CallEnd::kHardwareMatches, kAlways, Verdict::kForgiven, 0,
     "{change} {reserve}", ""},
    // The runtime id can be the stored one although the lists differ: the id is made of the present
    // hardware alone.
    {kMachine, kAny, CallEnd::kHardwareHasChanged, SameId, Verdict::kForgiven, 0,
     "{change} Still, the hardware gives the same id again.", ""},
    {kMachine, CallEnd::kRecordIsYoung, CallEnd::kHardwareHasChanged, OtherAccount,
     Verdict::kWillChange, 10,
     "{change} The id stays until the next comparison, which will give this account another one.",
     kOneKindOfAccount},
    {kMachine, CallEnd::kRecordIsYoung, CallEnd::kHardwareHasChanged, kAlways, Verdict::kWillChange,
     10, "{change} The id stays until the next comparison, which will give {new_id}.", kKeepCopy},
    {kMachine, CallEnd::kHardwareHasChanged, kAny, OtherAccount, Verdict::kChangesNow, 10,
     "{change} The next call gives this account another id.", kOneKindOfAccount},
    {kMachine, CallEnd::kHardwareHasChanged, kAny, kAlways, Verdict::kChangesNow, 10,
     "{change} The next call gives {new_id}.", kKeepCopy},
    // The host still gets its id, so this is no failure yet.
    {kMachine, CallEnd::kRecordIsYoung, CallEnd::kHardwareIsUnknown, kAlways,
     Verdict::kCannotCompare, 10,
     "The hardware cannot be listed now ({reading_failure}). The id stays until the next "
     "comparison, which will end with result 4.",
     kMendHardware},
    {kMachine, CallEnd::kRecordIsYoung, CallEnd::kFailed, kAlways, Verdict::kCannotCompare, 10,
     "A comparison now would fail ({failure}). The id stays until the next one.", kMendHardware},
    {kMachine, CallEnd::kHardwareIsUnknown, kAny, kAlways, Verdict::kCannotCompare, 20,
     "A comparison is due, and the hardware cannot be listed ({reading_failure}): the next call "
     "ends with result 4.",
     kMendHardware},
    {kMachine, kAny, CallEnd::kRecordIsRandom, kAlways, Verdict::kNotCompared, 0,
     "The record belongs to a random id, which is never compared with the hardware. The id stays.",
     ""},
    {kMachine, kAny, CallEnd::kRecordHasOtherId, NoGoodRecordId, Verdict::kNotCompared, 0,
     "The record is damaged ({record_damage}), so the hardware is not compared. The stored id "
     "stays.",
     kKeepForHardware},
    {kMachine, kAny, CallEnd::kRecordHasOtherId, OlderId, Verdict::kNotCompared, 0,
     "The record belongs to {record_id}, so the hardware is not compared, and calls give the older "
     "id.",
     kWriteRecordIdNow},
    {kMachine, kAny, CallEnd::kRecordHasOtherId, kAlways, Verdict::kNotCompared, 0,
     "The record belongs to another id, {record_id}, so the hardware is not compared. The stored "
     "id stays.",
     kWhoChangedFiles},

    // This machine, where something is missing.
    {kMachine, CallEnd::kNewMachine, kAny, Random, Verdict::kNewMachine, 0,
     "{nothing_stored}. The next call makes a random id, since no part can be read.",
     "Find out why no part can be read before a host asks for an id."},
    {kMachine, CallEnd::kNewMachine, kAny, kAlways, Verdict::kNewMachine, 0,
     "{nothing_stored}. The next call makes the id from the hardware.", ""},
    {kMachine, CallEnd::kIdStays, kAny, kAlways, Verdict::kMadeAnew, 0,
     "{record_trouble}, and no part can be read to make the id anew. It stays.", ""},
    {kMachine, CallEnd::kMadeAnew, kAny, SameId, Verdict::kMadeAnew, 0,
     "{record_trouble}, so the next call makes the id anew from the hardware. It stays the same.",
     ""},
    {kMachine, CallEnd::kMadeAnew, kAny, kAlways, Verdict::kMadeAnew, 10,
     "{record_trouble}, so the next call makes the id anew from the hardware. It will be another "
     "one.",
     kPutRecordBack},
    {kMachine, CallEnd::kNoId, kAny, NoGoodRecordId, Verdict::kNoId, 20,
     "{id_trouble}, and there is a record: each call ends with result 4.", kBeginAnew},
    {kMachine, CallEnd::kNoId, kAny, kAlways, Verdict::kNoId, 20,
     "{id_trouble}, and there is a record: each call ends with result 4.", kWriteRecordId},
    {kMachine, CallEnd::kFailed, kAny, FatalRecord, Verdict::kFailed, 20,
     "The record in {record_folder} is damaged ({record_damage}): each call ends with result 3.",
     kMoveRecord},
    {kMachine, CallEnd::kFailed, kAny, kAlways, Verdict::kFailed, 20,
     "The next call fails with {failure}.", "Read the log of the call, and call again."},

    // This machine, formats below 2.0.
    {kMachine, CallEnd::kStoredId, kAny, kAlways, Verdict::kStored, 0,
     "The id of format {format} is stored, and stays whatever the hardware does.", ""},
    {kMachine, CallEnd::kFromHardware, kAny, Random, Verdict::kFromHardware, 10,
     "No part can be read, so the id of format {format} rests on a number that the call draws.",
     "Find out why no part can be read before a host asks for an id."},
    {kMachine, CallEnd::kFromHardware, kAny, StoresAnId, Verdict::kFromHardware, 0,
     "No id of format {format} is stored. The next call makes it from the hardware and stores it.",
     ""},
    {kMachine, CallEnd::kFromHardware, kAny, kAlways, Verdict::kFromHardware, 0,
     "The id of format {format} is made from the hardware in each call, and changes with each "
     "part.",
     ""},

    // A copied folder.
    {kFolder, CallEnd::kFailed, kAny, kAlways, Verdict::kFailed, 20,
     "The record is damaged ({record_damage}): a call would end with result 3.", kMoveRecord},
    {kFolder, CallEnd::kNoId, kAny, NoGoodRecordId, Verdict::kNoId, 20,
     "{id_trouble}, and there is a record: a call would end with result 4.", kBeginAnew},
    {kFolder, CallEnd::kNoId, kAny, kAlways, Verdict::kNoId, 20,
     "{id_trouble}, and there is a record: a call would end with result 4.", kWriteRecordId},
    {kFolder, CallEnd::kNewMachine, kAny, kAlways, Verdict::kNewMachine, 0,
     "{nothing_stored}. A call would make the id from the hardware.", ""},
    {kFolder, CallEnd::kMadeAnew, kAny, kAlways, Verdict::kMadeAnew, 10,
     "{record_trouble}. A call makes the id anew from the hardware, so it stays only where that is "
     "the same.",
     kPutRecordBack},
    {kFolder, CallEnd::kRecordIsRandom, kAny, kAlways, Verdict::kNotCompared, 0,
     "The record belongs to a random id, which is never compared with the hardware.", ""},
    {kFolder, CallEnd::kRecordHasOtherId, kAny, NoGoodRecordId, Verdict::kNotCompared, 0,
     "The record is damaged ({record_damage}), so the hardware is not compared.", kKeepForHardware},
    {kFolder, CallEnd::kRecordHasOtherId, kAny, OlderId, Verdict::kNotCompared, 0,
     "The record belongs to {record_id}, so the hardware is not compared, and calls give the older "
     "id.",
     kWriteRecordId},
    {kFolder, CallEnd::kRecordHasOtherId, kAny, kAlways, Verdict::kNotCompared, 0,
     "The record belongs to another id, {record_id}, so the hardware is not compared.",
     kWhoChangedFiles},
    {kFolder, kAny, kAny, kAlways, Verdict::kUndecided, 0,
     "The id and its record are good. Whether the hardware still fits shows on its machine only.",
     ""},

    // A log.
    {kLog, kAny, kAny, NoCall, Verdict::kUndecided, 20, "This is not the log of a call.",
     "Give the log as the host got it, or the folder with the stored files."},
    {kLog, CallEnd::kFailed, kAny, FatalRecord, Verdict::kFailed, 20,
     "The call failed with result 3, since the record hid_settings is damaged ({reason}).",
     "Give the old id back with deviceid repair keep, or begin anew with deviceid repair anew."},
    {kLog, CallEnd::kFailed, kAny, kAlways, Verdict::kFailed, 20, "The call failed with {failure}.",
     "Call again. If it goes on, look at the memory of the host's process."},
    {kLog, CallEnd::kRefused, kAny, kAlways, Verdict::kFailed, 20,
     "The call was refused with result 8: {call} is for format 2.0 only.",
     "Ask for format 2.0, or call GetHardwareId."},
    {kLog, CallEnd::kHardwareMatches, kAny, AllSame, Verdict::kSame, 0,
     "{agreement} The call gave the stored id.", ""},
    {kLog, CallEnd::kHardwareMatches, kAny, kAlways, Verdict::kForgiven, 0,
     "{change} The call gave the stored id.", ""},
    {kLog, CallEnd::kHardwareHasChanged, kAny, SameId, Verdict::kForgiven, 0,
     "{change} Still, the hardware gave the same id again.", ""},
    {kLog, CallEnd::kHardwareHasChanged, kAny, OtherAccount, Verdict::kChangesNow, 10,
     "{change} The call gave this account {new_id}.",
     "Let either root alone or ordinary accounts alone ask for the id."},
    {kLog, CallEnd::kHardwareHasChanged, kAny, kAlways, Verdict::kChangesNow, 10,
     "{change} The call gave {new_id}.",
     "If the old id is to stay, give it back: deviceid repair keep."},
    {kLog, CallEnd::kRecordIsYoung, kAny, OlderId, Verdict::kNotCompared, 0,
     "The record was younger than ten days, so the call gave that id without a comparison.",
     kExplainThere},
    {kLog, CallEnd::kRecordHasOtherId, kAny, OlderId, Verdict::kNotCompared, 0,
     "The record belonged to another id, so the hardware was not compared. The call gave the older "
     "id, and the record to it.",
     "If the other id is to stay, take it from a backup or an earlier log, and give it back: "
     "deviceid repair keep."},
    {kLog, CallEnd::kRecordIsYoung, kAny, Random, Verdict::kNotCompared, 0,
     "The record was younger than ten days, so the call gave the stored id. No part could be read.",
     kMendHardware},
    // The same id from the present hardware is as good as a comparison.
    {kLog, CallEnd::kRecordIsYoung, kAny, SameId, Verdict::kSame, 0,
     "The record was younger than ten days, so the call gave the stored id. The hardware gives the "
     "same id.",
     ""},
    {kLog, CallEnd::kRecordIsYoung, kAny, OtherAccount, Verdict::kNotCompared, 0,
     "The record was younger than ten days, so the call gave the stored id. This account cannot "
     "read the serial numbers of product and board, and without them the hardware gives another "
     "id.",
     "Let either root alone or ordinary accounts alone ask for the id."},
    {kLog, CallEnd::kRecordIsYoung, kAny, kAlways, Verdict::kNotCompared, 0,
     "The record was younger than ten days, so the call gave the stored id. The hardware would "
     "give "
     "another id: some part has changed since that was made.",
     "Explain on the machine what has changed."},
    {kLog, CallEnd::kRecordIsRandom, kAny, kAlways, Verdict::kNotCompared, 0,
     "The record belongs to a random id, which is never compared. The call gave the stored id.",
     ""},
    {kLog, CallEnd::kRecordHasOtherId, kAny, kAlways, Verdict::kNotCompared, 0,
     "The record belonged to another id, so the hardware was not compared. The call gave the "
     "stored "
     "id.",
     kWhoChangedFiles},
    {kLog, CallEnd::kHardwareIsUnknown, kAny, kAlways, Verdict::kCannotCompare, 20,
     "A comparison was due, and the hardware could not be listed ({reading_failure}): the call "
     "ended with result 4.",
     kMendHardware},
    {kLog, CallEnd::kNewMachine, kAny, Random, Verdict::kNewMachine, 0,
     "{nothing_stored}. The call made a random id, since no part could be read.",
     "Find out why no part could be read."},
    {kLog, CallEnd::kNewMachine, kAny, Flags, Verdict::kNewMachine, 0,
     "{nothing_stored}. {call} made the id from the hardware, or from a random number if its flags "
     "say so.",
     ""},
    {kLog, CallEnd::kNewMachine, kAny, kAlways, Verdict::kNewMachine, 0,
     "{nothing_stored}. The call made the id from the hardware.",
     "On a machine that had an id, find out who removed the files."},
    {kLog, CallEnd::kIdStays, kAny, kAlways, Verdict::kMadeAnew, 0,
     "{record_trouble}, and no part could be read to make the id anew. It stayed.", kMendHardware},
    {kLog, CallEnd::kMadeAnew, kAny, SameId, Verdict::kMadeAnew, 0,
     "{record_trouble}, so the call made the id anew from the hardware. It stayed the same.", ""},
    {kLog, CallEnd::kMadeAnew, kAny, Flags, Verdict::kMadeAnew, 10,
     "{record_trouble}, so {call} made the id anew from the hardware, or kept it if its flags say "
     "so.",
     ""},
    {kLog, CallEnd::kMadeAnew, kAny, kAlways, Verdict::kMadeAnew, 10,
     "{record_trouble}, so the call made the id anew from the hardware. It became another one, in "
     "place of {stored_id}.",
     "If the old id is to stay, give it back: deviceid repair keep."},
    {kLog, CallEnd::kNoId, kAny, kAlways, Verdict::kNoId, 20,
     "{id_trouble}, and there was a record: the call ended with result 4.", kExplainThere},
    {kLog, CallEnd::kStoredId, kAny, kAlways, Verdict::kStored, 0,
     "The call gave the stored id of format {format}, which stays whatever the hardware does.", ""},
    {kLog, CallEnd::kFromHardware, kAny, Random, Verdict::kFromHardware, 10,
     "No part could be read, so the id of format {format} rests on a number that the call drew.",
     kMendHardware},
    {kLog, CallEnd::kFromHardware, kAny, kAlways, Verdict::kFromHardware, 0,
     "The call made the id of format {format} from the hardware.", ""},
    {kLog, kAny, kAny, kAlways, Verdict::kUndecided, 20,
     "The log ends before it tells how the call decided.",
     "Give the call a log buffer of 65536 bytes."},

    // What no call of this version ends with.
    {kMachine, kAny, kAny, kAlways, Verdict::kUndecided, 20,
     "The log of the call does not tell how it decided.", ""},
};

// What is said before the sentence of a rule.
struct Lead {
  bool (*fits)(const Findings&);
  const char* sentence;
};

constexpr Lead kLeads[] = {
    {OlderId, "{older_id}. "},
    {[](const Findings& f) { return !Word(f, "other_id").empty(); },
     "The two folders hold different ids. The one in {id_folder} counts, and the next call removes "
     "{other_id} from {other_folder}. "},
};

bool Fits(const VerdictRule& rule, const Findings& findings) {
  return rule.source == findings.source && (!rule.end || rule.end == findings.end) &&
         (!rule.recheck || rule.recheck == findings.recheck) &&
         (rule.also == nullptr || rule.also(findings));
}

std::string FillIn(std::string_view text, const Findings& findings) {
  std::string filled;
  while (!text.empty()) {
    const std::size_t open = std::min(text.find('{'), text.size());
    filled += text.substr(0, open);
    text.remove_prefix(open);
    if (text.empty()) break;
    const std::size_t close = text.find('}');
    filled += Word(findings, std::string(text.substr(1, close - 1)));
    text.remove_prefix(close + 1);
  }
  return filled;
}

// Numbers in words.

std::string Number(std::size_t number) {
  constexpr std::array<const char*, 5> kWords = {"no", "one", "two", "three", "four"};
  return number < kWords.size() ? kWords[number] : std::to_string(number);
}

std::string Capital(std::string text) {
  if (!text.empty()) text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

std::size_t Compared(const MatchCounts& counts) { return std::min(counts.stored, counts.runtime); }

// How many changes `compared` parts may have.
std::size_t Forgiven(std::size_t compared) {
  return compared - std::min(compared, RequiredMatches(compared));
}

std::string DescribeForgiven(std::size_t changes) {
  return Number(changes) + (changes > 1 ? " changes are forgiven." : " change is forgiven.");
}

std::string CountParts(std::size_t number, std::size_t of) {
  return std::to_string(number) + " of " + std::to_string(of) + (of == 1 ? " part" : " parts") +
         (number == 1 ? " has" : " have");
}

// "the product and the board", of all parts in one state; empty if one of them has no name.
std::string ListParts(const Findings& findings, PartState state) {
  std::vector<std::string> names;
  for (const Part& part : findings.parts) {
    if (part.state != state) continue;
    if (part.names.empty()) return {};
    names.push_back("the " + NameOf(part));
  }
  std::string list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += i + 1 == names.size() ? " and " : ", ";
    list += names[i];
  }
  return list;
}

std::string DescribeAgreement(const MatchCounts& counts) {
  const std::size_t compared = Compared(counts);
  const std::size_t needed = RequiredMatches(compared);
  const std::string all =
      compared == 1 ? "The one part" : "All " + std::to_string(compared) + " parts";
  const std::string verb = compared == 1 ? " agrees" : " agree";
  if (counts.stored == counts.runtime && counts.matches == compared) return all + verb + ".";
  return "Of " + std::to_string(compared) + (compared == 1 ? " place" : " places") +
         " that can be compared, " +
         (counts.matches == 0 ? "none" : std::to_string(counts.matches)) +
         (counts.matches <= 1 ? " agrees" : " agree") + ", and " + std::to_string(needed) +
         (needed == 1 ? " has to." : " have to.");
}

std::string DescribeMissing(const Findings& findings) {
  const auto& [matches, stored, runtime] = *findings.counts;
  std::string gone = ListParts(findings, PartState::kGone);
  if (gone.empty()) gone = Number(stored - runtime) + " of " + Number(stored) + " stored parts";
  if (findings.other_account) return gone + " can be read by root, and not by this account.";
  return gone + (findings.source == kLog ? " could not be read." : " can no longer be read.");
}

std::string DescribeAdded(const Findings& findings) {
  const std::string added = ListParts(findings, PartState::kNew);
  return (added.empty() ? "more parts" : added) +
         (findings.other_account
              ? " can be read by root, and could not be by the account that made the record."
              : " can be read now, and could not when the record was made.");
}

std::string DescribeChange(const Findings& findings) {
  const MatchCounts& counts = *findings.counts;
  if (counts.runtime == 0) return "No part can be read.";
  if (counts.stored == 0) return "The record holds no part, so nothing agrees.";
  if (counts.stored != counts.runtime) {
    const bool missing = counts.stored > counts.runtime;
    return Capital(missing ? DescribeMissing(findings) : DescribeAdded(findings)) + " " +
           DescribeAgreement(counts);
  }
  const std::size_t changed = counts.stored - counts.matches;
  const std::size_t forgiven = Forgiven(counts.stored);
  return CountParts(changed, counts.stored) + " changed, and " +
         (forgiven > 0 && changed > forgiven ? "only " : "") + DescribeForgiven(forgiven);
}

std::string DescribeReserve(const MatchCounts& counts) {
  const std::size_t compared = Compared(counts);
  const std::size_t left =
      Forgiven(compared) - std::min(Forgiven(compared), compared - counts.matches);
  const bool unchanged = counts.matches == compared;
  if (left > 0) {
    return Capital(unchanged ? DescribeForgiven(left) : Number(left) + " more will be forgiven.");
  }
  return unchanged ? "Any change will give a new id." : "One more will give a new id.";
}

}  // namespace

const char* TextOf(Verdict verdict) {
  constexpr std::array<const char*, 13> kTexts = {
      "same",          "forgiven",    "not-compared",   "new-machine", "made-anew",
      "will-change",   "changes-now", "cannot-compare", "no-id",       "failed",
      "from-hardware", "stored",      nullptr};
  return kTexts[static_cast<std::size_t>(verdict)];
}

const char* LabelOf(Verdict verdict, int status) {
  switch (verdict) {
    case Verdict::kSame:
    case Verdict::kForgiven:
    case Verdict::kNotCompared:
    case Verdict::kStored:
      return "KEPT";
    case Verdict::kNewMachine:
      return "NEW";
    case Verdict::kMadeAnew:
      return status == 0 ? "KEPT" : "CHANGES";
    case Verdict::kWillChange:
      return "WILL CHANGE";
    case Verdict::kChangesNow:
      return "CHANGES";
    case Verdict::kCannotCompare:
      return status == 20 ? "NO ID" : "AT RISK";
    case Verdict::kNoId:
      return "NO ID";
    case Verdict::kFailed:
      return "FAILED";
    case Verdict::kFromHardware:
      return "FROM HARDWARE";
    case Verdict::kUndecided:
      break;
  }
  return "UNDECIDED";
}

const char* TextOf(Situation situation) {
  constexpr std::array<const char*, 4> kTexts = {"known-machine", "id-without-record",
                                                 "new-machine", "record-without-id"};
  return kTexts[static_cast<std::size_t>(situation)];
}

void Decide(const Findings& findings, Explanation& explanation) {
  const auto* const rule =
      std::find_if(std::begin(kRules), std::end(kRules),
                   [&](const VerdictRule& candidate) { return Fits(candidate, findings); });
  explanation.verdict = rule->verdict;
  explanation.status = rule->status;
  for (const Lead& lead : kLeads) {
    if (lead.fits(findings)) explanation.sentence += FillIn(lead.sentence, findings);
  }
  explanation.sentence += FillIn(rule->sentence, findings);
  explanation.advice = FillIn(rule->advice, findings);
}

void DescribeComparison(Findings& findings) {
  if (!findings.counts) return;
  findings.words["change"] = DescribeChange(findings);
  findings.words["agreement"] = DescribeAgreement(*findings.counts);
  findings.words["reserve"] = DescribeReserve(*findings.counts);
}

}  // namespace system_info
