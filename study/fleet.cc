#include "study/fleet.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace system_info {
namespace {

using NumberedBallot = std::array<std::uint32_t, kBallotSize>;

// What remains of a life that was played.
struct Ending {
  bool copy;
  std::array<Course, kRuleCount> courses;
  NumberedBallot stored_ballot;
  NumberedBallot ballot;
  std::optional<Loss> loss;
  std::string serial_kind;
};

// Texts as numbers, to compare many of them; the empty one is 0.
class Numbers {
 public:
  NumberedBallot Of(const Ballot& ballot) {
    NumberedBallot numbers = {};
    for (std::size_t i = 0; i < ballot.size(); ++i) {
      if (ballot.at(i).empty()) continue;
      const auto next = static_cast<std::uint32_t>(numbers_.size()) + 1;
      numbers.at(i) = numbers_.emplace(ballot.at(i), next).first->second;
    }
    return numbers;
  }

 private:
  std::map<std::string, std::uint32_t> numbers_;
};

Ending EndOf(const Life& life, bool copy, Numbers& numbers) {
  Ending ending = {copy, {}, {}, {}, life.loss(), life.SerialKind()};
  for (int rule = 0; rule < kRuleCount; ++rule) {
    ending.courses.at(static_cast<std::size_t>(rule)) =
        life.watch().course(static_cast<Rule>(rule));
  }
  ending.stored_ballot = numbers.Of(life.watch().ballot());
  ending.ballot = numbers.Of(TakeBallot(life.computer()));
  return ending;
}

std::vector<Ending> PlayAll(const Population& population, const Habit& habit,
                            PlayedLibrary& library) {
  std::vector<Ending> endings;
  Numbers numbers;
  for (int number = 0; number < population.size; ++number) {
    std::vector<Life> waiting;
    waiting.emplace_back(population, number, library, habit);
    for (bool copy = false; !waiting.empty(); copy = true) {
      Life life = waiting.back();
      waiting.pop_back();
      life.Play(waiting);
      endings.push_back(EndOf(life, copy, numbers));
    }
  }
  return endings;
}

// For each machine, whether no other one has its id.
std::vector<bool> OwnIds(const std::vector<Ending>& endings, Rule rule) {
  std::map<std::string, int> holders;
  for (const Ending& ending : endings) ++holders[ending.courses.at(rule).last];
  std::vector<bool> own;
  for (const Ending& ending : endings) {
    const std::string& id = ending.courses.at(rule).last;
    own.push_back(!id.empty() && holders[id] == 1);
  }
  return own;
}

// For each machine, whether it would not pass for any other one.
std::vector<bool> OwnBallots(const std::vector<Ending>& endings) {
  std::vector<bool> own(endings.size(), true);
  for (std::size_t i = 0; i < endings.size(); ++i) {
    for (std::size_t k = 0; k < endings.size() && own[i]; ++k) {
      if (i != k && SameByVote(endings[k].stored_ballot, endings[i].ballot)) own[i] = false;
    }
  }
  return own;
}

nlohmann::json CountRule(const std::vector<Ending>& endings, Rule rule,
                         const std::vector<bool>& own) {
  std::array<int, 3> kept = {};
  int none = 0;
  int back = 0;
  int owners = 0;
  int own_copies = 0;
  for (std::size_t i = 0; i < endings.size(); ++i) {
    const Course& course = endings[i].courses.at(rule);
    if (own[i]) ++(endings[i].copy ? own_copies : owners);
    if (endings[i].copy) continue;
    if (course.first.empty()) ++none;
    for (std::size_t year = 0; year < kept.size(); ++year) {
      const int last_day = (static_cast<int>(year) + 1) * kDaysPerYear;
      if (course.lost_on < 0 || course.lost_on > last_day) ++kept.at(year);
    }
    if (!course.last.empty() && course.last == course.first) ++back;
  }
  return {{"none", none},
          {"kept", kept},
          {"back", back},
          {"own", owners + own_copies},
          {"own_copies", own_copies}};
}

void CountOurs(const std::vector<Ending>& endings, const std::vector<bool>& own,
               nlohmann::json& counts) {
  std::map<std::string, int> losses;
  std::map<std::string, std::map<std::string, int>> kinds;
  int by_order = 0;
  for (std::size_t i = 0; i < endings.size(); ++i) {
    const Ending& ending = endings[i];
    if (ending.copy) continue;
    auto& kind = kinds[ending.serial_kind];
    ++kind["machines"];
    kind["kept"] += ending.loss ? 0 : 1;
    kind["own"] += own[i] ? 1 : 0;
    if (!ending.loss) continue;
    ++losses[ending.loss->causes];
    by_order += ending.loss->by_order ? 1 : 0;
  }
  counts["losses"] = losses;
  counts["lost_by_order"] = by_order;
  counts["kinds"] = kinds;
}

}  // namespace

nlohmann::json PlayFleet(const Population& population, const Habit& habit) {
  PlayedLibrary library;
  const std::vector<Ending> endings = PlayAll(population, habit, library);
  nlohmann::json counts;
  counts["machines"] = population.size;
  counts["copies"] = endings.size() - static_cast<std::size_t>(population.size);
  counts["calls"] = library.calls();
  for (int number = 0; number < kRuleCount; ++number) {
    const auto rule = static_cast<Rule>(number);
    const auto own = rule == kVote ? OwnBallots(endings) : OwnIds(endings, rule);
    counts["rules"][kRuleNames.at(rule)] = CountRule(endings, rule, own);
    if (rule == kFormat20) CountOurs(endings, own, counts);
  }
  return counts;
}

}  // namespace system_info
