// The library itself on a made-up machine: its exported calls, with the machine's hardware, files
// and date in the place of this one's.

#ifndef DEVICEID_STUDY_PLAYED_LIBRARY_H_
#define DEVICEID_STUDY_PLAYED_LIBRARY_H_

#include <cstdint>
#include <string>

#include "platform/linux/machine.h"
#include "study/computer.h"
#include "study/memory_files.h"

namespace system_info {

// Takes the place of the running machine for as long as it lives. Belongs to one thread.
class PlayedLibrary final : public Machine {
 public:
  PlayedLibrary();
  ~PlayedLibrary() override;

  // The id that a host on `computer` gets on `day`; empty if there is none. `recheck` compares
  // whatever the age of the record. Stores what the call stores in `computer`.
  std::string GetId(Computer& computer, const char* format, int day, bool recheck = false);

  std::uint64_t calls() const { return calls_; }

  std::unique_ptr<Hardware> LookAtHardware() override;
  std::wstring WindowsFolder() override { return L"C:\\Windows"; }
  std::optional<std::string> CommonRoot() override { return "/common"; }
  std::optional<std::string> UserRoot() override;
  std::int64_t PresentTicks() override;

 private:
  const Computer* computer_ = nullptr;
  int day_ = 0;
  std::uint64_t calls_ = 0;
  MemoryFiles files_;
  Machine* previous_machine_;
  FileOverlay* previous_files_;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_PLAYED_LIBRARY_H_
