#include "platform/linux/machine.h"

#include "platform/linux/layer_state.h"
#include "platform/linux/linux_machine.h"

namespace {

thread_local DWORD last_error = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() { return last_error; }

void SetLastError(DWORD code) { last_error = code; }

namespace system_info {
namespace {

std::atomic<Machine*> replacement{nullptr};

}  // namespace

Machine& PresentMachine() {
  if (Machine* machine = replacement.load()) return *machine;
  static LinuxMachine real_computer("/");
  return real_computer;
}

Machine* SetPresentMachine(Machine* machine) { return replacement.exchange(machine); }

LiveObjects CountLiveObjects() {
  const LiveCounters& live = Live();
  return {live.com_objects,       live.com_strings,       live.handles,
          live.apartment_entries, live.looks_at_hardware, live.objects_after_com};
}

LiveCounters& Live() {
  static LiveCounters counters;
  return counters;
}

std::optional<std::uint32_t> ScriptedFailure(PlatformCall call, std::string_view subject) {
  return PresentMachine().FailureOf(call, subject);
}

std::string Subject(std::wstring_view text) {
  std::string subject;
  for (const wchar_t character : text) {
    subject += character < 0x80 ? static_cast<char>(character) : '?';
  }
  return subject;
}

}  // namespace system_info
