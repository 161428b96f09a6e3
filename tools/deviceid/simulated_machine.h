// Machines that differ from this one in what they are asked to.

#ifndef DEVICEID_TOOLS_DEVICEID_SIMULATED_MACHINE_H_
#define DEVICEID_TOOLS_DEVICEID_SIMULATED_MACHINE_H_

#include <optional>
#include <string>
#include <vector>

#include "inspection/change_matrix.h"
#include "inspection/changed_hardware.h"
#include "inspection/explanation.h"

namespace deviceid {

// One difference from this machine.
struct Change {
  enum class Kind { kReplace, kGone, kNew, kDays, kAccount, kRestore };
  std::string word;  // As it was asked for: "new=board:b7".
  Kind kind = Kind::kReplace;
  std::optional<system_info::PartName> part;
  std::string value;  // The text of a new part, the number of days, the folder.
};

// Throws Failure if a word is no change, or if two of them contradict each other.
std::vector<Change> ParseChanges(const std::vector<std::string>& words);

// All changes, as far as they can be listed: "gone=board", "new=board:", "restore=".
std::vector<std::string> ChangeWords();

// Reads the hardware of this machine once, for all that is asked of it. Writes nothing.
class SimulatedMachine {
 public:
  // Throws Failure if the library does not know `format`.
  explicit SimulatedMachine(const std::string& format);

  // What the calls would do. Throws Failure if this machine cannot be changed in such a way, since
  // it has no such part or there is no such folder.
  system_info::Explanation Explain(const std::vector<Change>& changes);

  // What would become of the id on a machine that has, beside `given`, one or two more changes.
  system_info::ChangeMatrix TryAll(const std::vector<Change>& given);

 private:
  // What `changes` come to.
  struct Differences {
    system_info::ChangedValues values;
    system_info::Pretence pretence;
    bool ordinary_account = false;
    std::vector<system_info::SimulatedChange> told;
  };

  Differences Plan(const std::vector<Change>& changes) const;
  void PlanPart(const Change& change, Differences& differences) const;
  system_info::Explanation Explain(const Differences& differences);
  system_info::PlayedCall Play(system_info::PlayedExport which,
                               const system_info::ChangedValues& values,
                               const system_info::Pretence& pretence);
  void ReadValues();
  // The present value of a part, or empty.
  std::string ValueOf(system_info::PartName part) const;

  std::string format_;
  system_info::ChangedHardware hardware_;
  std::vector<system_info::NamedValue> values_;  // Those that the format reads.
  std::string reading_failure_;
};

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_SIMULATED_MACHINE_H_
