// The scripted machine in the shape in which Wine shows its PC.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <future>
#include <memory>
#include <stdexcept>

#include "pc/pc.h"
#include "platform/windows_api.h"
#include "support/scripted_machine.h"

namespace pc {
namespace {

using system_info::PlatformCall;

class WinePc : public system_info::ScriptedMachine {
 public:
  WinePc() {
    Set(L"Win32_ComputerSystemProduct", L"UUID", L"deaddead-dead-dead-dead-deaddeaddead");
    Set(L"Win32_OperatingSystem", L"SerialNumber", L"12345-oem-0000001-54321");
    for (auto& [class_text, rows] : wmi) {
      if (rows[0].contains(L"MACAddress")) rows[0][L"MACAddress"] = L"00:1A:2B:C3:D4:0F";
    }
    adapters = {
        {"{00000002-0000-0000-0000-4E6574446576}", "nic", {0x00, 0x1a, 0x2b, 0xc3, 0xd4, 0x0f}},
        {"{00000003-0000-0000-0000-4E6574446576}", "other", {0x02, 0, 0, 0, 0, 0x01}}};
    pci_devices.clear();
    wmi[L"Win32_BaseBoard"].push_back({{L"SerialNumber", L"Only the first row counts"}});
    ticks = std::time(nullptr) * 10'000'000LL;
  }
  ~WinePc() override {
    if (geteuid() != getuid() && seteuid(getuid()) != 0) abort();
  }

  // Without a lock, which would order threads and hide a race.
  std::optional<std::uint32_t> FailureOf(PlatformCall call, std::string_view subject) override {
    return in_crowd ? std::nullopt : ScriptedMachine::FailureOf(call, subject);
  }

  bool in_crowd = false;
  bool foreseeable = true;
  std::size_t first_collection = 0;
};

std::unique_ptr<WinePc> machine;

}  // namespace

Library TheLibrary() {
  return {&::GetHardwareId, &::RecheckHardwareId, &::GetHardwareIdMod, &::GetHardwareIdEx,
          &::GetHIDVersion};
}

void Renew() {
  if (!(system_info::CountLiveObjects() == system_info::LiveObjects{})) {
    throw std::runtime_error("objects of the platform are left over");
  }
  machine.reset();
  machine = std::make_unique<WinePc>();
}

std::string Root(bool common) {
  return (common ? machine->common_root : machine->user_root).value_or("");
}

// Without the right to read serial numbers. Adapters have the names that Linux gives them.
void BecomeOrdinary() {
  chmod(machine->folder().c_str(), 0755);
  machine->Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", {});
  machine->Set(L"Win32_BaseBoard", L"SerialNumber", {});
  for (auto& adapter : machine->adapters) adapter.name = adapter.description;
  if (geteuid() == 0 && seteuid(65534) != 0) throw std::runtime_error("no other account");
}

void SetPart(const std::string& part, const std::string& value) {
  std::wstring text;
  for (const char byte : value) text += static_cast<unsigned char>(byte);
  // This is what Wine shows in place of no text.
  if (part == "product") {
    machine->Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", text.empty() ? L"0" : text);
  }
  if (part == "board") {
    machine->Set(L"Win32_BaseBoard", L"SerialNumber", text.empty() ? L"None" : text);
  }
  if (part == "all") {
    machine->adapters.clear();
    for (auto& [class_text, rows] : machine->wmi) {
      for (auto& [property, of_row] : rows[0]) of_row = text;
    }
  }
  if (part == "account") BecomeOrdinary();
  if (part == "pci") machine->pci_devices = {{true, value, "PCI adapter", {}}};
  if (part == "hardware") machine->LoseHardware();
  if (part != "network") return;
  machine->adapters.clear();
  std::erase_if(machine->wmi, [](const auto& c) { return c.second[0].contains(L"MACAddress"); });
}

std::string SetApartment(const std::string& apartment) {
  // "late": in such an apartment from the second collection of a call on.
  const int last = apartment == "late" ? 1 : 0;
  if (apartment == "mta") CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  if (apartment == "sta" || apartment == "late") {
    machine->on_call = [last](PlatformCall call, auto) -> std::optional<std::uint32_t> {
      if (call != PlatformCall::kCoInitializeEx || CountCollections() <= last) return std::nullopt;
      return 0x80010106;
    };
  }
  if (apartment != "none") return "";
  machine->on_call = nullptr;
  machine->Recover();
  if (system_info::CountLiveObjects().apartment_entries > 0) CoUninitialize();
  return "";
}

int CountCollections() {
  return static_cast<int>(machine->Seen(PlatformCall::kCoInitializeEx).size() -
                          machine->first_collection);
}

void StartCounting() {
  machine->first_collection = machine->Seen(PlatformCall::kCoInitializeEx).size();
}

bool IsForeseeable() { return machine->foreseeable; }

std::string RunProcesses(int processes, int threads, const std::vector<std::string>& task) {
  machine->in_crowd = true;
  for (int process = 0; process < processes; ++process) {
    if (fork() != 0) continue;
    std::vector<std::future<int>> running;
    for (int thread = 0; thread < threads; ++thread) {
      running.push_back(std::async(std::launch::async, CountFailures, task));
    }
    int failures = 0;
    for (std::future<int>& thread : running) failures += thread.get();
    if (!(system_info::CountLiveObjects() == system_info::LiveObjects{})) ++failures;
    _exit(std::min(failures, 100));
  }
  machine->in_crowd = false;
  int sum = 0;
  for (int status = 0; wait(&status) > 0;) sum += status;
  return std::to_string(sum) + " failures";
}

// "trouble CALL [FOLDER]": a platform call fails from now on, everywhere or in one folder.
std::string PlayOther(const std::vector<std::string>& step) {
  using enum PlatformCall;
  static const std::map<std::string, PlatformCall> kCalls = {
      {"open", kCreateFile},      {"read", kReadFile},     {"write", kWriteFile},
      {"short", kWriteFileShort}, {"delete", kDeleteFile}, {"mkdir", kCreateDirectory}};
  if (step[0] != "trouble") return "";
  const auto call = kCalls.find(step[1]);
  if (call != kCalls.end()) machine->Fail(call->second, 10, step.size() > 2 ? step[2] : "");
  if (step[1] == "halt") machine->At(kCoInitializeEx, "", [] { throw 7; });
  machine->foreseeable = step[1] != "race";
  if (step[1] == "race") {
    machine->At(kCreateDirectory, "", [] {
      system_info::WriteFileText(machine->Common("device.id"),
                                 "9-5-ABCDEF01-2345-6789-ABCD-EF0123456789");
    });
  }
  if (step[1] == "lost") machine->common_root = machine->user_root = std::nullopt;
  if (step[1] == "lost") machine->Fail(kCreateFile, 10);
  return "";
}

}  // namespace pc
