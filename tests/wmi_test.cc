// What each failure on the way through COM and WMI costs.

#include <stdexcept>

#include "platform/windows_api.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using Texts = std::vector<std::string>;
using enum PlatformCall;

constexpr std::size_t kAll = 9;
constexpr std::uint32_t kBad = 0x80004005;
constexpr const wchar_t* kBoard = L"Win32_BaseBoard";
constexpr const wchar_t* kSerial = L"SerialNumber";
const std::string kNoBoard =
    "[Debug] WMI property \"SerialNumber\" FOR CLASS \"Win32_BaseBoard\" = \"\"";
const std::string kNoVolume = "[Debug] Could not get ID of volume HDD";
const std::string kOddProperty = "[Error] Unexpected error in GetWmiProperty";

void Torn() { throw std::runtime_error("torn"); }
void Odd() { throw _com_error(E_FAIL); }

void LoseRowWithError(ScriptedMachine& machine) {
  machine.wmi[kBoard].clear();
  machine.Fail(kNext, kBad, "Board");
}

class WmiTest : public MachineTest {};

// What happens on the way, the position of the value that it costs, if not all, and the line in its
// place.
struct Failure {
  const char* name;
  void (*happen)(ScriptedMachine&);
  std::size_t lost;
  std::string line;
};

const Failure kFailures[] = {
    {"query", [](auto& m) { m.Fail(kExecQuery, kBad, "Board"); }, 2,
     "[Error] Failed to execute query"},
    {"row", [](auto& m) { m.Fail(kNext, kBad, "Board"); }, 2, "[Error] Failed to get next query"},
    {"value", [](auto& m) { m.Fail(kGet, kBad, "Ident"); }, 1, "[Error] Failed to get result"},
    {"exception", [](auto& m) { m.At(kGet, "Ident", Torn); }, 1,
     "[Error] Error in GetWmiProperty: torn"},
    {"memory", [](auto& m) { m.Fail(kSysAllocString, 1, "Board"); }, 2, kOddProperty},
    {"no row", [](auto& m) { m.wmi[kBoard].clear(); }, 2, kOddProperty},
    {"no row and an error", LoseRowWithError, 2, kOddProperty},
    {"null", [](auto& m) { m.Set(kBoard, kSerial, {}); }, 2, kNoBoard},
    {"number", [](auto& m) { m.Set(kBoard, kSerial, 7); }, 2, kNoBoard},
    {"number called text", [](auto& m) { m.Set(kBoard, kSerial, MistypedValue{7}); }, 2, kNoBoard},
    {"text called number", [](auto& m) { m.Set(kBoard, kSerial, MistypedValue{L"7"}); }, 2,
     kNoBoard},
    {"no such drive", [](auto& m) { m.windows_folder.assign(49, L'D'); }, 0, kOddProperty},
    {"long folder", [](auto& m) { m.windows_folder.assign(50, L'C'); }, 0, kNoVolume},
    {"no folder", [](auto& m) { m.Fail(kGetWindowsDirectory, 0); }, 0, kNoVolume},
    {"exception outside a value", [](auto& m) { m.At(kGetWindowsDirectory, "", Odd); }, kAll,
     "[Error] Unexpected error in GetWmiProperties"},
    {"standard exception", [](auto& m) { m.At(kGetWindowsDirectory, "", Torn); }, kAll,
     "[Error] Error in GetWmiProperties: torn"},
    {"locator", [](auto& m) { m.Fail(kCoCreateInstance, kBad); }, kAll,
     "[Error] Failed to create WbemLocator instance"},
    {"server", [](auto& m) { m.Fail(kConnectServer, kBad); }, kAll,
     "[Error] Failed to connect server"},
    {"proxy", [](auto& m) { m.Fail(kCoSetProxyBlanket, kBad); }, kAll,
     "[Error] Failed to set proxy blanket"},
    {"apartment", [](auto&) { EnterSingleThreadedApartment(); }, kAll,
     "[Error] Fail to initialize COM with error: -2147417850"},
};

TEST_F(WmiTest, EachFailureHasItsLineAndItsPrice) {
  Reply reply;
  const Texts values = {"1234abcd", "pf0xyz", "board7", "00:1a:2b:c3:d4:0f"};
  EXPECT_EQ(CollectList({2, 0}, &reply.log), values);
  Texts told = reply.Lines();
  told[0] = "[Debug] We are getting the information about the hardware in the Windows environment";
  for (const auto& [name, happen, lost, line] : kFailures) {
    SCOPED_TRACE(name);
    ScriptedMachine machine;
    happen(machine);
    HardwareIdSet left;
    Texts lines = {told[0], line};
    if (lost != kAll) {
      left = values;
      left->erase(left->begin() + static_cast<int>(lost));
      lines = told;
      lines.at(lost + 1) = line;
    }
    EXPECT_EQ(CollectList({2, 0}, &reply.log), left);
    EXPECT_EQ(reply.Lines(), lines);
    EXPECT_EQ(CollectString({1, 5}, &reply.log), Join(left.value_or(Texts())));
    EXPECT_EQ(reply.Lines(), lines);
    if (ApartmentEntries() > 0) LeaveSingleThreadedApartment();
  }
  pc.Fail(kSysAllocString, 1, "CIMV2");
  EXPECT_EQ(GetId("1.2").result, 4);
}

TEST_F(WmiTest, EachEntryIntoComIsALookOfItsOwn) {
  IP_ADAPTER_INFO adapters[2];
  ULONG size = sizeof(IP_ADAPTER_INFO);
  const auto list = [&] { return GetAdaptersInfo(adapters, &size); };
  EXPECT_EQ(list(), ERROR_INVALID_PARAMETER);
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  EXPECT_EQ(CollectString({1, 5}), "1234abcdpf0xyzboard700:1a:2b:c3:d4:0f");
  EXPECT_EQ(CountLiveObjects().looks_at_hardware, 1);
  EXPECT_EQ(list(), ERROR_BUFFER_OVERFLOW);
  CoUninitialize();
  EnterSingleThreadedApartment();
  void* locator = nullptr;
  EXPECT_EQ(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                             &locator),
            CO_E_NOTINITIALIZED);
  EXPECT_EQ(list(), ERROR_INVALID_PARAMETER);
  LeaveSingleThreadedApartment();
}

}  // namespace
}  // namespace system_info
