// The hardware values of a machine by name, and what became of each since they were stored.
//
// A record lists its values in the order of these names, does not name them and leaves absent ones
// out. Which is which is told by form, order and the present values.

#ifndef DEVICEID_INSPECTION_HARDWARE_PARTS_H_
#define DEVICEID_INSPECTION_HARDWARE_PARTS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace system_info {

// In the order in which values are joined and listed. The last two stand in no list; formats 1.0 to
// 1.2 join them before the others.
enum class PartName { kVolume, kProduct, kBoard, kNetwork, kUuid, kSerial };

// "volume", "product", "board", "network", "uuid", "serial".
const char* TextOf(PartName name);

struct NamedValue {
  PartName name;
  std::string text;  // Not empty, and not "0".
};

enum class PartState { kSame, kChanged, kMoved, kGone, kNew, kUnknown };

// "same", "changed", "moved", "gone", "new", "unknown".
const char* TextOf(PartState state);

struct Part {
  std::vector<PartName> names;  // All that the value can be: one as a rule.
  std::optional<std::string> stored;
  std::optional<std::string> present;
  PartState state = PartState::kUnknown;
};

// "board", or "product or board".
std::string NameOf(const Part& part);

// True if the part is, or can be, one of those that root alone can read on Linux.
bool IsSerialNumber(const Part& part);

// Sets the values of a record beside those of the machine, in the order of the names. A value is
// the same only at the same place of both lists, and moved at another one. Without `present` the
// state of all is unknown.
std::vector<Part> CompareParts(const std::vector<std::string>& stored,
                               const std::optional<std::vector<NamedValue>>& present);

// True if the texts differ in case, blanks and separators only.
bool IsSameTextRespelled(std::string_view one, std::string_view other);

// Why a value may be found on many machines, or on this one for a while only; empty if nothing is
// known against it. "a text that makers leave in place of a number"
std::string DoubtAbout(PartName name, std::string_view text);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_HARDWARE_PARTS_H_
