// A call of the library that is played with the real files and hardware and leaves no trace.
//
// The library's own code runs, from the frame of the exported call on. Its files are those of this
// machine under an overlay that takes all changes; its hardware is read once and remembered, so
// that several calls can be played on one reading. Nothing here prints anything.

#ifndef DEVICEID_INSPECTION_PLAYED_CALL_H_
#define DEVICEID_INSPECTION_PLAYED_CALL_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hardware/os_manager.h"
#include "values/device_id.h"
#include "values/hid_result.h"

namespace system_info {

// Where a played call takes its hardware values from.
class HardwareSource {
 public:
  HardwareSource() = default;
  HardwareSource(const HardwareSource&) = delete;
  HardwareSource& operator=(const HardwareSource&) = delete;
  virtual ~HardwareSource() = default;

  // The two collections of an OSManager, which log to `log` as far as they are read now.
  virtual HardwareIdString GetHardwareIdString(const HidFormatVersion& version,
                                               const std::shared_ptr<HIDLog>& log) = 0;
  virtual HardwareIdSet GetHardwareIdList(const HidFormatVersion& version,
                                          const std::shared_ptr<HIDLog>& log) = 0;
};

// The hardware of the running machine, read by a WindowsOSManager at most once for each collection
// and format. Both log lines and values are given again when they are asked for again.
std::unique_ptr<HardwareSource> ReadThisMachine();

enum class PlayedExport { kGet, kRecheck, kMod };

// What a played call would have stored, in the order in which it came to the files. What goes
// through a link changes the path that the link leads to.
struct FileChange {
  enum class Kind { kFileWritten, kFileRemoved, kFolderMade };
  Kind kind;
  std::string path;     // In the narrow form of the system, as the library builds it.
  std::string content;  // Of a file that was written, as far as this account may read it.
};

struct PlayedCall {
  HidResult result = HidResult::UnexpectedFailure;
  std::optional<DeviceId> id;  // With HidResult::Success.
  // The id rests on a number that was drawn in this call: the real call draws another one.
  bool random = false;
  std::string log;                  // Whole, also where a host would not see it.
  std::vector<FileChange> changes;  // What is different from before, one entry a path.
};

// What a played call finds otherwise than it is now.
struct Pretence {
  std::int64_t seconds_later = 0;
  // Made before the call, in this order, whatever this account may do. A file keeps its rights; one
  // that is new belongs to this account. A folder has to come before its files.
  std::vector<FileChange> changes;
};

// Plays one call. `flags` are those of kMod and ignored otherwise. The changes of `pretence` are
// among those of the result.
PlayedCall PlayCall(PlayedExport which, const std::string& format, std::uint32_t flags,
                    HardwareSource& hardware, const Pretence& pretence = {});

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_PLAYED_CALL_H_
