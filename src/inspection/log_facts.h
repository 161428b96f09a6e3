// What the log of one call tells: what it read, which rule decided, what failed.
//
// Whatever a log does not say, because it was cut or a host did not see it, is absent.

#ifndef DEVICEID_INSPECTION_LOG_FACTS_H_
#define DEVICEID_INSPECTION_LOG_FACTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/hardware_parts.h"

namespace system_info {

enum class Place { kCommon, kUser };

// A search for "device.idv2" or "device.id" in both folders.
struct IdSearch {
  bool begun = false;
  std::vector<std::string> read_errors;  // One for each copy that gave no text; empty for no bytes.
  std::optional<Place> place;            // Where a text was found.
  std::string text;                      // As it stands in the file.
  std::optional<bool> good;              // Whether there is a text and it is an id.
};

enum class AdapterRule { kPci, kFirstWithoutPci, kFirstPciMissing, kAskedWmi };

struct ReadValue {
  PartName name;
  std::string text;     // Empty if there is none.
  std::string failure;  // The line in place of a value.
  bool cut = false;     // A character of it has no form in the narrow text of the library.
};

struct Adapter {
  std::string name;
  std::string address;
  std::string description;
};

// One collection of the hardware.
struct HardwareReading {
  std::string failure;  // The line that says why nothing was read: COM, WMI or an exception.
  std::vector<ReadValue> values;  // In the order of reading.
  std::vector<Adapter> adapters;
  std::optional<AdapterRule> adapter_rule;
  std::string adapter_failure;  // The line that says why the adapters were not listed.
  bool untold = false;          // The log could not hold a value.
  bool whole = false;           // All values that its format reads are here, or the failure.

  // The values that stand in a list.
  std::vector<NamedValue> Listed() const;
  // The values joined, as an id is made of them.
  std::string Joined() const;
};

// One of the two folders of older versions.
struct CarryOver {
  enum class End { kFolderNotMade, kNothingThere, kCopied, kCopyFailed };
  std::string new_folder;
  std::string old_folder;
  std::optional<End> end;
};

struct MatchCounts {
  std::size_t matches = 0;
  std::size_t stored = 0;
  std::size_t runtime = 0;
};

// How a call came to its end. The first six have the id of a file.
enum class CallEnd {
  kRecordIsYoung,
  kRecordIsRandom,
  kRecordHasOtherId,
  kHardwareMatches,
  kStoredId,  // Format 1.6 and its file.
  kIdStays,   // An id without a record, and no hardware to make it anew from.
  kHardwareHasChanged,
  kMadeAnew,  // An id without a record, made anew.
  kNewMachine,
  kFromHardware,  // A format below 2.0.
  kNoId,
  kHardwareIsUnknown,
  kRefused,
  kFailed,
};

struct LogFacts {
  std::size_t calls = 0;     // How many calls the log holds; the last one is told.
  bool ends_in_line = true;  // Its last line has its line end.
  std::string call;          // "GetHardwareId", "RecheckHardwareId" or "GetHardwareIdMod".
  std::string format;

  std::vector<CarryOver> carried_over;
  IdSearch idv2;
  IdSearch id;
  std::optional<bool> record_read;
  std::vector<HardwareReading> readings;

  bool random = false;                    // A number was drawn, or would have been.
  std::optional<std::string> runtime_id;  // Made from the hardware or the number.
  std::optional<std::int64_t> age;        // Of the record, in seconds.
  bool age_ignored = false;
  std::optional<bool> compared;
  std::optional<MatchCounts> counts;

  // Failures to store, each with the line before it that says why.
  std::vector<std::string> common_write_errors;
  std::vector<std::string> user_write_errors;

  std::optional<CallEnd> end;
  std::optional<std::string> failure;  // Of a call that failed: its reason, or empty for none.

  // The search whose text is the stored id of the call, or null.
  const IdSearch* Loaded() const;
};

// Which value a property of a class of WMI is, or none.
std::optional<PartName> NameOfProperty(std::string_view property, std::string_view class_text);

// Reads one call. `log` is a whole log or one that was cut at its end; see RestoreLog.
LogFacts ReadLogFacts(std::string_view log);

// What stands in `message` for each "<>" of `text`, or nothing if it is another text. All but the
// last one are as short as can be.
std::optional<std::vector<std::string>> MatchLogText(std::string_view text,
                                                     std::string_view message);

// Each text of docs/log.md that the reader looks for, with "<>" for what varies.
std::vector<std::string> KnownLogTexts();

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_LOG_FACTS_H_
