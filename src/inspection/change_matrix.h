// What becomes of the id with each change of one part and with each pair of such changes.

#ifndef DEVICEID_INSPECTION_CHANGE_MATRIX_H_
#define DEVICEID_INSPECTION_CHANGE_MATRIX_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"

namespace system_info {

enum class Fate { kKept, kLost, kNoId };

// "kept", "lost", "no id".
const char* TextOf(Fate fate);

struct ChangeMatrix {
  struct Cell {
    Fate fate = Fate::kNoId;
    CallOutcome call;  // The call that compares.
  };

  std::string format;
  std::optional<std::string> id;  // The id that is kept or lost.
  // Nothing is stored, so the id is that of a first call, and all changes come after that call.
  bool after_first_call = false;
  Explanation unchanged;  // Without these changes, but with those that were asked for beside them.
  // Each part can be replaced, which is the change 2 * place, or gone, which is 2 * place + 1.
  std::vector<PartName> parts;
  // One row and one column for each change. The diagonal has the single changes; no machine has
  // both changes of one part.
  std::vector<std::vector<std::optional<Cell>>> cells;
};

// "replace=board", "gone=board".
std::string WordOf(const ChangeMatrix& matrix, std::size_t change);

// Lines of at most 80 columns.
std::string ToText(const ChangeMatrix& matrix);

// As docs/simulate-all.schema.json describes it, without a line end behind it.
std::string ToJson(const ChangeMatrix& matrix);

// A picture that needs no other file. `date` is the day that stands below it.
std::string ToSvg(const ChangeMatrix& matrix, const std::string& date);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_CHANGE_MATRIX_H_
