// The scripted machine in the shape in which Wine shows its PC.

#include <memory>

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
    ticks = std::time(nullptr) * 10'000'000LL;
  }
};

std::unique_ptr<WinePc> machine;

}  // namespace

Library TheLibrary() { return {&::GetHardwareId, &::RecheckHardwareId, &::GetHardwareIdMod}; }

void Renew() {
  machine.reset();
  machine = std::make_unique<WinePc>();
}

std::string Root(bool common) { return *(common ? machine->common_root : machine->user_root); }

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
  if (part == "pci") machine->pci_devices = {{true, value, "PCI adapter", {}}};
  if (part == "hardware") machine->LoseHardware();
  if (part != "network") return;
  machine->adapters.clear();
  std::erase_if(machine->wmi, [](const auto& c) { return c.second[0].contains(L"MACAddress"); });
}

std::string SetApartment(const std::string& apartment) {
  // "late": in such an apartment from the second collection on.
  const int last = apartment == "late" ? CountCollections() + 1 : 0;
  if (apartment == "mta") CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  if (apartment == "sta" || apartment == "late") {
    machine->At(PlatformCall::kCoInitializeEx, "", [last] {
      if (CountCollections() > last) machine->Fail(PlatformCall::kCoInitializeEx, 0x80010106);
    });
  }
  if (apartment != "none") return "";
  machine->on_call = nullptr;
  machine->Recover();
  if (system_info::CountLiveObjects().apartment_entries > 0) CoUninitialize();
  return "";
}

int CountCollections() {
  return static_cast<int>(machine->Seen(PlatformCall::kCoInitializeEx).size());
}

std::string PlayOther(const std::vector<std::string>& /*step*/) { return ""; }

}  // namespace pc
