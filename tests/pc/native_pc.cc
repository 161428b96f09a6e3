// The scripted machine in the shape in which Wine shows its PC.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <future>
#include <map>
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
    ticks = std::time(nullptr) * system_info::kTicksPerSecond;
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

// An ordinary account of Linux cannot read serial numbers, and adapters have short names there.
void LoseRights() {
  constexpr uid_t kNobody = 65534;
  machine->Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", {});
  machine->Set(L"Win32_BaseBoard", L"SerialNumber", {});
  for (auto& adapter : machine->adapters) adapter.name = adapter.description;
  chmod(machine->folder().c_str(), 0755);
  if (geteuid() != 0) return;
  const bool moved = chown(Root(false).c_str(), kNobody, kNobody) == 0 && seteuid(kNobody) == 0;
  if (!moved) throw std::runtime_error("no other account");
}

void Lose(const Arguments& arguments, std::string& /*none*/) {
  if (arguments.at(0) == "hardware") {
    machine->LoseHardware();
  } else if (arguments[0] == "network") {
    machine->adapters.clear();
    std::erase_if(machine->wmi, [](const auto& c) { return c.second[0].contains(L"MACAddress"); });
  } else if (arguments[0] == "rights") {
    LoseRights();
  } else {
    throw std::invalid_argument("cannot lose " + arguments[0]);
  }
}

void Enter(const Arguments& arguments, std::string& answer) {
  answer = "0";
  if (arguments.at(0) == "mta") {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    return;
  }
  if (arguments[0] != "sta" && arguments[0] != "late") {
    throw std::invalid_argument("no such apartment: " + arguments[0]);
  }
  const int good_readings = arguments[0] == "late" ? 1 : 0;
  machine->on_call = [good_readings](PlatformCall call, auto) -> std::optional<std::uint32_t> {
    const bool fails = call == PlatformCall::kCoInitializeEx && CountCollections() > good_readings;
    return fails ? std::optional<std::uint32_t>(RPC_E_CHANGED_MODE) : std::nullopt;
  };
}

void Leave(const Arguments& /*none*/, std::string& answer) {
  machine->on_call = nullptr;
  if (system_info::CountLiveObjects().apartment_entries > 0) CoUninitialize();
  answer = "0, then -2147221008";
}

void Fail(const Arguments& arguments, std::string& /*none*/) {
  using enum PlatformCall;
  constexpr std::uint32_t kAccessDenied = 5;
  constexpr std::uint32_t kBytesWritten = 10;
  constexpr std::uint32_t kWmiAccessDenied = 0x80041003;
  static const std::map<std::string, std::pair<PlatformCall, std::uint32_t>> kFailures = {
      {"open", {kCreateFile, kAccessDenied}},      {"read", {kReadFile, kAccessDenied}},
      {"write", {kWriteFile, kAccessDenied}},      {"short", {kWriteFileShort, kBytesWritten}},
      {"delete", {kDeleteFile, kAccessDenied}},    {"mkdir", {kCreateDirectory, kAccessDenied}},
      {"wmi", {kConnectServer, kWmiAccessDenied}},
  };
  const auto found = kFailures.find(arguments.at(0));
  if (found == kFailures.end()) throw std::invalid_argument("cannot let fail: " + arguments[0]);
  const auto& [call, code] = found->second;
  machine->Fail(call, code, arguments.size() > 1 ? arguments[1] : "");
}

void Pass(const Arguments& arguments, std::string& /*none*/) {
  machine->PassDays(std::stoi(arguments.at(0)));
}

void Halt(const Arguments& /*none*/, std::string& /*none*/) {
  machine->At(PlatformCall::kCoInitializeEx, "", [] { throw 7; });
}

void Race(const Arguments& /*none*/, std::string& /*none*/) {
  machine->foreseeable = false;
  machine->At(PlatformCall::kCreateDirectory, "", [] {
    system_info::WriteFileText(machine->Common("device.id"),
                               "9-5-ABCDEF01-2345-6789-ABCD-EF0123456789");
  });
}

void LoseFolders(const Arguments& /*none*/, std::string& none) {
  machine->common_root = machine->user_root = std::nullopt;
  // The library would go to the top of this computer's own tree.
  for (const char* call : {"open", "delete", "mkdir"}) Fail({call}, none);
}

void OnWindowsOnly(const Arguments& /*any*/, std::string& answer) { answer = "on Windows only"; }

const std::map<std::string, Verb> kVerbs = {
    {"lose", Lose},           {"enter", Enter},         {"leave", Leave}, {"fail", Fail},
    {"pass", Pass},           {"halt", Halt},           {"race", Race},   {"lost", LoseFolders},
    {"cycle", OnWindowsOnly}, {"beside", OnWindowsOnly}};

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

std::string Root(bool common) { return machine->folder() + (common ? "/common" : "/user"); }

void SetPart(const std::string& part, const std::string& value) {
  std::wstring text;
  for (const char byte : value) text += static_cast<unsigned char>(byte);
  // This is what Wine shows in place of no text.
  if (part == "product") {
    machine->Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", text.empty() ? L"0" : text);
  } else if (part == "board") {
    machine->Set(L"Win32_BaseBoard", L"SerialNumber", text.empty() ? L"None" : text);
  } else if (part == "volume") {
    machine->Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", text);
  } else if (part == "pci") {
    machine->pci_devices = {{true, value, "PCI adapter", {}}};
  } else if (part == "all") {
    machine->adapters.clear();  // So WMI is asked for the address, too.
    for (auto& [class_text, rows] : machine->wmi) {
      for (auto& [property, of_row] : rows[0]) of_row = text;
    }
  } else {
    throw std::invalid_argument("no such part: " + part);
  }
}

bool PlayOther(const std::string& verb, const Arguments& arguments, std::string& answer) {
  const auto found = kVerbs.find(verb);
  if (found != kVerbs.end()) found->second(arguments, answer);
  return found != kVerbs.end();
}

int CountCollections() {
  return static_cast<int>(machine->Seen(PlatformCall::kCoInitializeEx).size() -
                          machine->first_collection);
}

void StartCounting() {
  machine->first_collection = machine->Seen(PlatformCall::kCoInitializeEx).size();
}

bool IsForeseeable() { return machine->foreseeable; }

int RunProcesses(int processes, int threads, const Arguments& task) {
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
  return sum;
}

}  // namespace pc
