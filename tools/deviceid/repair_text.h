// A repair as it is announced, for people and as JSON.

#ifndef DEVICEID_TOOLS_DEVICEID_REPAIR_TEXT_H_
#define DEVICEID_TOOLS_DEVICEID_REPAIR_TEXT_H_

#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "tools/deviceid/stored_ids.h"

namespace deviceid {

// What will be different at one path.
struct Effect {
  const char* action;                 // "write", "remove" or "make" for a folder.
  std::string path;                   // UTF-8
  std::optional<std::string> before;  // What the file holds, in a few words.
  std::optional<std::string> after;
};

// By what the file holds now.
Effect EffectOf(const system_info::FileChange& change);

struct Announcement {
  std::string repair;                    // "keep"
  std::vector<Effect> effects;           // The call that follows included.
  system_info::Explanation explanation;  // Of the state that comes of it.
  std::vector<OtherId> taken;            // Ids that other accounts lose.
};

// What came of it.
struct RepairOutcome {
  bool done = false;
  std::optional<system_info::CallOutcome> call;  // None if there was none.
  std::string backup;                            // Empty if there is none.
};

// Lines of UTF-8, the last one with its line end.
std::string ToText(const Announcement& announcement);

// One object as docs/repair.schema.json describes it, without a line end behind it.
std::string ToJson(const Announcement& announcement, const RepairOutcome& outcome);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_REPAIR_TEXT_H_
