// Why the id is what it is and what the next call will do, in one sentence and the facts behind it.
//
// Everything that an explanation rests on is given as plain data: no file, clock or hardware is
// read here.

#ifndef DEVICEID_INSPECTION_EXPLANATION_H_
#define DEVICEID_INSPECTION_EXPLANATION_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/hardware_parts.h"
#include "inspection/played_call.h"

namespace system_info {

// What is explained.

struct StoredFile {
  enum class State { kMissing, kRead, kUnreadable };
  State state = State::kMissing;
  std::string bytes;         // Of an id file at least the first 8192, of a record all.
  std::uint64_t unread = 0;  // More bytes behind those.
  std::string why;           // If unreadable: "permission denied", "a folder stands in its place".
};

struct StateFolder {
  enum class Kind { kCommon, kUser, kCopy };
  Kind kind = Kind::kCommon;
  std::string path;
  StoredFile idv2;    // device.idv2
  StoredFile id;      // device.id
  StoredFile record;  // hid_settings
};

// This machine, as one account sees it.
struct MachineState {
  bool windows = false;
  bool administrator = false;  // Root, where only root reads serial numbers.
  std::string format = "2.0";
  std::vector<StateFolder> folders;  // The common one, then the user's.
  PlayedCall next;
  std::optional<PlayedCall> recheck;  // With format 2.0.
  HardwareIdSet hardware;             // The list of format 2.0.
  std::string hardware_log;           // The log of collecting it.
};

// What is told.

enum class Verdict {
  kSame,
  kForgiven,
  kNotCompared,
  kNewMachine,
  kMadeAnew,
  kWillChange,
  kChangesNow,
  kCannotCompare,
  kNoId,
  kFailed,
  kFromHardware,
  kStored,
  kUndecided,  // What was given does not tell. Null in JSON.
};

// "same", "forgiven" and so on; null for kUndecided.
const char* TextOf(Verdict verdict);

// In a word or two: "KEPT". The status counts too: an id that is made anew may stay.
const char* LabelOf(Verdict verdict, int status);

enum class Situation { kKnownMachine, kIdWithoutRecord, kNewMachine, kRecordWithoutId };

// "known-machine" and so on.
const char* TextOf(Situation situation);

struct CallOutcome {
  int result = 0;
  std::optional<std::string> id;  // None if it is random.
  bool random = false;
};

// The record that counts.
struct RecordSummary {
  std::int64_t date = 0;
  std::int64_t compared_from = 0;  // Ten days later.
  StateFolder::Kind folder = StateFolder::Kind::kCommon;
  std::string path;  // Of its folder.
  std::int32_t type = 0;
  std::string id;
  std::string format;
  std::vector<std::string> parts;
  std::uint64_t trailing_bytes = 0;
  std::string damage;  // Of a record that the library reads although it names no id.
};

struct Warning {
  std::string code;  // "damaged-file"
  std::string text;
};

// One difference from a kept copy.
struct Difference {
  std::string what;  // "id", "record" or the name of a file or part.
  std::optional<std::string> kept;
  std::optional<std::string> present;
};

// One way in which a machine that is only simulated differs from this one.
struct SimulatedChange {
  std::string change;  // As it was asked for: "gone=board".
  std::string text;    // What it does, for people.
};

struct Explanation {
  Verdict verdict = Verdict::kUndecided;
  int status = 0;  // Of the program: 0, 10 or 20.
  std::string sentence;
  std::string advice;  // Empty if there is nothing to do.
  std::optional<Situation> situation;
  std::optional<std::string> id;  // The stored one; of a log the one that the call gave.
  std::optional<CallOutcome> next;
  std::optional<CallOutcome> recheck;
  std::optional<RecordSummary> record;
  std::vector<Part> parts;
  std::optional<std::size_t> agree;
  std::optional<std::size_t> compared;
  std::optional<std::size_t> needed;
  std::optional<std::size_t> changes_left;
  std::vector<Warning> warnings;
  // Only where a kept copy was given.
  std::optional<std::vector<Difference>> against;
  // Only of a machine that is simulated.
  std::optional<std::vector<SimulatedChange>> simulated;

  // For people.
  std::string id_folder;  // Where the id is stored, or empty.
  StateFolder::Kind id_folder_kind = StateFolder::Kind::kCommon;
  bool due = false;       // The next call compares.
  bool older_id = false;  // The id of device.id stands in for a damaged device.idv2.
};

// What the calls on this machine would do.
Explanation ExplainMachine(const MachineState& machine);

// What a copied state folder tells without its machine.
Explanation ExplainFolder(const StateFolder& folder);

// What the call did whose log a host kept. `bytes` are those of the file, however it was saved.
Explanation ExplainLog(std::string_view bytes);

// Adds in what `present` differs from `kept`, a folder that was copied earlier. `present` are the
// folders of the machine, or the copied one.
void CompareWithKept(Explanation& explanation, const std::vector<StateFolder>& present,
                     const StateFolder& kept);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_EXPLANATION_H_
