// The rules that are compared, and what becomes of their ids on one machine.

#ifndef DEVICEID_STUDY_RULES_H_
#define DEVICEID_STUDY_RULES_H_

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "study/computer.h"
#include "study/played_library.h"

namespace system_info {

enum Rule {
  // The library's formats.
  kFormat20,
  kFormat16,
  kFormat15,
  kFormat14,
  kFormat12,
  kFormat11,
  kFormat10,
  // What others do.
  kMachineId,
  kFirstAddress,
  kSystemUuid,
  kBoardSerial,
  kUuidAndDisk,
  kAllAddresses,
  kFiveParts,
  kVote,
  kRuleCount
};

// As the parts of a page and of a result are called.
extern const std::array<const char*, kRuleCount> kRuleNames;

// The id of a rule that keeps nothing, from `kMachineId` to `kFiveParts`. Empty if there is none.
std::string IdByRule(Rule rule, const Computer& computer);

// What a licence server that counts votes stores of a machine.
constexpr std::size_t kBallotSize = 8;
using Ballot = std::array<std::string, kBallotSize>;
Ballot TakeBallot(const Computer& computer);

// True if at least 70 in 100 of the parts that `stored` has are the same in `present`. A part that
// is not there is equal to Part().
template <typename Part>
bool SameByVote(const std::array<Part, kBallotSize>& stored,
                const std::array<Part, kBallotSize>& present) {
  int parts = 0;
  int votes = 0;
  for (std::size_t i = 0; i < kBallotSize; ++i) {
    if (stored[i] == Part()) continue;
    ++parts;
    if (stored[i] == present[i]) ++votes;
  }
  return parts > 0 && votes * 100 >= parts * 70;
}

// The ids of one rule on one machine.
struct Course {
  std::string first;
  std::string last;
  int lost_on = -1;  // The first day with another id or without one; -1 if there is none.
};

// How a host asks: every so many days, and after each event or not.
struct Habit {
  int days = 10;
  bool after_events = true;
  bool recheck = false;     // It has format 2.0 compare in each call.
  bool all_formats = true;  // It asks for the formats before 2.0, too.
};

// Follows all rules on one machine.
class Watch {
 public:
  explicit Watch(PlayedLibrary& library, const Habit& habit = {})
      : library_(library), habit_(habit) {}

  // Asks each rule for its id. Formats that do not look at the date are not asked a third time
  // about what they have seen twice.
  void Look(Computer& computer, int day);

  const Course& course(Rule rule) const { return courses_[rule]; }
  bool Keeps(Rule rule) const { return courses_[rule].lost_on < 0; }
  const Ballot& ballot() const { return stored_ballot_; }

 private:
  // Of the formats before 2.0.
  struct Answers {
    int times = 0;
    std::array<std::string, kMachineId> ids;
  };

  void LookByFormats(Computer& computer, int day);
  void Note(Rule rule, const std::string& id, int day);
  void Vote(const Computer& computer, int day);

  PlayedLibrary& library_;
  Habit habit_;
  bool begun_ = false;
  std::map<std::string, Answers> answers_;  // By what the library can find.
  std::array<Course, kRuleCount> courses_;
  Ballot stored_ballot_;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_RULES_H_
