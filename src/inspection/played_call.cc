#include "inspection/played_call.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <map>
#include <utility>

#include "api/request.h"
#include "hardware/windows_os_manager.h"
#include "inspection/overlaid_files.h"
#include "support/clock_shift.h"
#include "support/file_overlay.h"

namespace system_info {
namespace {

constexpr std::uint32_t kIdSize = 64;

// For the log of a call that ends before its manager is there.
constexpr std::uint32_t kLogSize = 1U << 16;

// One collection as it was read: its value or the exception that ended it, and its log lines.
template <typename Collection>
class Reading {
 public:
  explicit Reading(const std::function<Collection(OSManager&)>& collect) {
    WindowsOSManager manager(log_);
    try {
      collection_ = collect(manager);
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  Collection Repeat(HIDLog& log) const {
    log.Append(*log_);
    if (failure_) std::rethrow_exception(failure_);
    return collection_;
  }

 private:
  std::shared_ptr<HIDLog> log_ = std::make_shared<HIDLog>();
  Collection collection_;
  std::exception_ptr failure_;
};

class ThisMachine final : public HardwareSource {
 public:
  HardwareIdString GetHardwareIdString(const HidFormatVersion& version,
                                       const std::shared_ptr<HIDLog>& log) override {
    return Read(strings_, &OSManager::GetHardwareIdString, version, *log);
  }
  HardwareIdSet GetHardwareIdList(const HidFormatVersion& version,
                                  const std::shared_ptr<HIDLog>& log) override {
    return Read(lists_, &OSManager::GetHardwareIdList, version, *log);
  }

 private:
  template <typename Collection>
  using Readings = std::map<std::pair<std::uint32_t, std::uint32_t>, Reading<Collection>>;

  template <typename Collection>
  static Collection Read(Readings<Collection>& readings,
                         Collection (OSManager::*collect)(const HidFormatVersion&),
                         const HidFormatVersion& version, HIDLog& log) {
    const auto key = std::pair(version.major, version.minor);
    auto reading = readings.find(key);
    if (reading == readings.end()) {
      reading =
          readings.emplace(key, [&](OSManager& manager) { return (manager.*collect)(version); })
              .first;
    }
    return reading->second.Repeat(log);
  }

  Readings<HardwareIdString> strings_;
  Readings<HardwareIdSet> lists_;
};

// What the manager of a played call leaves behind.
struct Seen {
  std::shared_ptr<HIDLog> log;
  bool no_hardware = false;  // An id was to be made and there was nothing to make it from.
  std::vector<std::string> stored_texts;  // What the device id files gave.
};

// Takes the hardware from its source and all else from the manager of the running machine.
class PlayedManager final : public OSManager {
 public:
  PlayedManager(const std::shared_ptr<HIDLog>& log, HardwareSource& hardware, Seen& seen)
      : OSManager(log), files_(log), hardware_(hardware), seen_(seen) {}

  HardwareIdString GetHardwareIdString(const HidFormatVersion& version) override {
    HardwareIdString text = hardware_.GetHardwareIdString(version, log_);
    seen_.no_hardware = text.empty();
    return text;
  }
  HardwareIdSet GetHardwareIdList(const HidFormatVersion& version) override {
    return hardware_.GetHardwareIdList(version, log_);
  }
  bool ReadCommonDeviceId(std::string& id, const HidFormatVersion& version) override {
    return Note(files_.ReadCommonDeviceId(id, version), id);
  }
  bool ReadUserDeviceId(std::string& id, const HidFormatVersion& version) override {
    return Note(files_.ReadUserDeviceId(id, version), id);
  }
  bool WriteCommonDeviceId(const std::string& id, const HidFormatVersion& version) override {
    return files_.WriteCommonDeviceId(id, version);
  }
  bool WriteUserDeviceId(const std::string& id, const HidFormatVersion& version) override {
    return files_.WriteUserDeviceId(id, version);
  }
  void DeleteUserDeviceId(const HidFormatVersion& version) override {
    files_.DeleteUserDeviceId(version);
  }

 private:
  bool Note(bool found, const std::string& id) {
    if (found) seen_.stored_texts.push_back(id);
    return found;
  }

  WindowsOSManager files_;
  HardwareSource& hardware_;
  Seen& seen_;
};

// Puts files and clock in the place of the system's.
class OverlayScope {
 public:
  OverlayScope(FileOverlay& overlay, std::int64_t clock_shift)
      : previous_(SetFileOverlay(&overlay)), previous_shift_(SetClockShift(clock_shift)) {}
  OverlayScope(const OverlayScope&) = delete;
  OverlayScope& operator=(const OverlayScope&) = delete;
  ~OverlayScope() {
    SetFileOverlay(previous_);
    SetClockShift(previous_shift_);
  }

 private:
  FileOverlay* previous_;
  std::int64_t previous_shift_;
};

Request MakeRequest(PlayedExport which, const HostBuffers& buffers, const std::string& format,
                    std::uint32_t flags) {
  switch (which) {
    case PlayedExport::kRecheck:
      return RecheckRequest(buffers, format.c_str());
    case PlayedExport::kMod:
      return ModRequest(buffers, format.c_str(), flags);
    case PlayedExport::kGet:
      break;
  }
  return GetRequest(buffers, format.c_str());
}

// True if `id` is none of those that the files gave. Only ids that the present formats return are
// asked about: those of the files, in their own form or in that of the format with a record.
bool IsNew(const DeviceId& id, const std::vector<std::string>& stored_texts) {
  return std::none_of(stored_texts.begin(), stored_texts.end(), [&](const std::string& text) {
    return id == text || id == RewriteDeviceIdPrefix(text, kFirstWithRecord);
  });
}

}  // namespace

std::unique_ptr<HardwareSource> ReadThisMachine() { return std::make_unique<ThisMachine>(); }

PlayedCall PlayCall(PlayedExport which, const std::string& format, std::uint32_t flags,
                    HardwareSource& hardware, const Pretence& pretence) {
  std::vector<char> id(kIdSize);
  std::vector<char> log(kLogSize);
  const HostBuffers buffers = {id.data(), kIdSize, log.data(), kLogSize};
  const Request request = MakeRequest(which, buffers, format, flags);
  OverlaidFiles files;
  for (const FileChange& change : pretence.changes) files.Pretend(change);
  Seen seen;
  PlayedCall played;
  {
    const OverlayScope scope(files, pretence.seconds_later);
    played.result = Answer(request, [&](const std::shared_ptr<HIDLog>& shared) {
      seen.log = shared;
      return std::make_unique<PlayedManager>(shared, hardware, seen);
    });
  }
  played.log = seen.log ? seen.log->text() : log.data();
  played.changes = files.Changes();
  if (played.result != HidResult::Success) return played;
  played.id = id.data();
  const bool drawn = seen.no_hardware || (request.flags & ForceRandomHid) != 0;
  played.random = drawn && IsNew(*played.id, seen.stored_texts);
  return played;
}

}  // namespace system_info
