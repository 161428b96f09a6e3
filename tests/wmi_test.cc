// What the formats read through COM and WMI, and what each failure on the way costs.

#include <algorithm>
#include <stdexcept>

#include "platform/windows_api.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::ElementsAre;
using testing::Optional;
using enum PlatformCall;

constexpr const wchar_t* kProduct = L"Win32_ComputerSystemProduct";
constexpr const wchar_t* kVolume = L"win32_logicaldisk WHERE deviceid=\"C:\"";
constexpr const char* kUuid = "4c4c4544-0042-3510-8052-b4c04f4e3732";
constexpr const char* kMac = "00:1a:2b:c3:d4:0f";

void Torn() { throw std::runtime_error("torn"); }
void Odd() { throw _com_error(E_FAIL); }

class WmiTest : public MachineTest {
 protected:
  WmiTest() { CollectString({1, 2}, &undisturbed.log); }

  // In format 1.2 `line` replaces that of the lost value or, if all values are lost, ends the log.
  void Expect(const std::string& lost, const std::string& line, bool all = false) {
    std::vector<std::string> lines = undisturbed.Lines();
    lines.front() =
        "[Debug] We are getting the information about the hardware in the Windows environment";
    const auto place = std::find_if(lines.begin(), lines.end(), [&](const std::string& entry) {
      return entry.ends_with('"' + lost + '"');
    });
    ASSERT_NE(place, lines.end()) << undisturbed;
    *place = line;
    std::string rest =
        kUuid + std::string("00330-80000-00000-aa1231234abcdpf0xyzboard700:50:56:c0:00:02");
    rest.erase(rest.find(lost), lost.size());
    if (all) lines.erase(place + 1, lines.end()), rest.clear();
    Reply reply;
    EXPECT_EQ(CollectString({1, 2}, &reply.log), rest);
    EXPECT_EQ(reply.Lines(), lines);
    EXPECT_EQ(CollectList({2, 0}, &reply.log).has_value(), !all) << reply;
    EXPECT_EQ(reply.Lines() == std::vector({lines.front(), line}), all) << reply;
  }

  Reply undisturbed;
};

TEST_F(WmiTest, EachFormatReadsItsValuesInOrder) {
  // With the numbers of queries and adapter calls so far.
  const std::tuple<const char*, std::size_t, std::size_t, const char*> formats[] = {
      // 4c4c4544-0042-3510-8052-b4c04f4e373200330-80000-00000-aa1231234abcdpf0xyzboard7
      {"1.0", 5, 0, "66c9f7b2-49b8-7ba1-8986-792e4656e283"},
      {"1.1", 11, 0, "1-1-3b640921-c66a-a2d2-d080-e6f1d25f06fd"},  // and 00:50:56:c0:00:02
      {"1.2", 17, 0, "1-2-3b640921-c66a-a2d2-d080-e6f1d25f06fd"},
      {"1.4", 21, 0, "1-4-aed802fa-a303-39ad-a82e-f81e67b2db3f"},  // from 1234abcd on
      // 1234abcdpf0xyzboard700:1a:2b:c3:d4:0f
      {"1.5", 24, 2, "1-5-e605da79-8246-9201-b359-b533fafc9984"},
      {"1.6", 27, 4, "1-6-e605da79-8246-9201-b359-b533fafc9984"},
  };
  pc.wmi[L"Win32_BaseBoard"].push_back({{L"SerialNumber", L"SECOND"}});
  for (const auto& [version, queries, adapter_calls, id] : formats) {
    const Reply reply = GetId(version);
    EXPECT_EQ(reply.id, id) << reply;
    EXPECT_EQ(pc.Seen(kExecQuery).size() - 6, queries) << reply;  // Six are of the fixture.
    EXPECT_EQ(pc.Seen(kGetAdaptersInfo).size(), adapter_calls) << reply;
  }
}

TEST_F(WmiTest, EachFailureHasItsLineAndItsPrice) {
  using Case = std::tuple<PlatformCall, const char*, void (*)(), bool, const char*, std::string>;
  const Case cases[] = {
      {kExecQuery, "Board", nullptr, false, "board7", "Failed to execute query"},
      {kNext, "Board", nullptr, false, "board7", "Failed to get next query"},
      {kGet, "Ident", nullptr, false, "pf0xyz", "Failed to get result"},
      {kSysAllocString, "UUID", nullptr, false, kUuid, "Unexpected error in GetWmiProperty"},
      {kNext, "Board", Odd, false, "board7", "Unexpected error in GetWmiProperty"},
      {kGet, "UUID", Torn, false, kUuid, "Error in GetWmiProperty: torn"},
      {kCoCreateInstance, "", nullptr, true, kUuid, "Failed to create WbemLocator instance"},
      {kConnectServer, "", nullptr, true, kUuid, "Failed to connect server"},
      {kCoSetProxyBlanket, "", nullptr, true, kUuid, "Failed to set proxy blanket"},
      {kGetWindowsDirectory, "", Odd, true, "1234abcd", "Unexpected error in GetWmiProperties"},
      {kGetWindowsDirectory, "", Torn, true, "1234abcd", "Error in GetWmiProperties: torn"},
  };
  for (const auto& [call, about, thrown, all, lost, line] : cases) {
    thrown != nullptr ? pc.At(call, about, thrown) : pc.Fail(call, 0x80004005, about);
    Expect(lost, "[Error] " + line, all);
    pc.Recover();
    pc.on_call = nullptr;
  }
  pc.Fail(kSysAllocString, 1, "CIMV2");
  EXPECT_EQ(GetId("1.2").result, 4);
}

TEST_F(WmiTest, AMissingValueCostsNoOther) {
  pc.Set(kProduct, L"UUID", {});
  Expect(kUuid, WmiLine("UUID", "Win32_ComputerSystemProduct", ""));
  pc.Set(kProduct, L"UUID", 7);
  Expect(kUuid, WmiLine("UUID", "Win32_ComputerSystemProduct", ""));
  pc.Set(kProduct, L"UUID", L"4C4C4544-0042-3510-8052-B4C04F4E3732");

  pc.windows_folder = L"D:" + std::wstring(47, L'w');
  Expect("1234abcd", "[Error] Unexpected error in GetWmiProperty");
  pc.Fail(kNext, 0x80004005, "D:");
  Expect("1234abcd", "[Error] Unexpected error in GetWmiProperty");
  pc.Recover();
  pc.wmi[L"win32_logicaldisk WHERE deviceid=\"D:\""] = {{{L"VolumeSerialNumber", {}}}};
  Expect("1234abcd", WmiLine("VolumeSerialNumber", "win32_logicaldisk WHERE deviceid=\"D:\"", ""));
  pc.windows_folder += L'w';
  Expect("1234abcd", "[Debug] Could not get ID of volume HDD");
  pc.Fail(kGetWindowsDirectory, 0);
  Expect("1234abcd", "[Debug] Could not get ID of volume HDD");
}

TEST_F(WmiTest, TheApartmentOfTheHostsThreadStaysAsItIs) {
  EnterSingleThreadedApartment();
  Expect(kUuid, "[Error] Fail to initialize COM with error: -2147417850", true);
  EXPECT_EQ(ApartmentEntries(), 1);
  LeaveSingleThreadedApartment();
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  EXPECT_EQ(CollectString({1, 5}), std::string("1234abcdpf0xyzboard7") + kMac);
  EXPECT_EQ(ApartmentEntries(), 1);
  CoUninitialize();
}

TEST_F(WmiTest, TheListLeavesOutEmptyValuesAndSingleZeros) {
  EXPECT_THAT(CollectList({2, 0}), Optional(ElementsAre("1234abcd", "pf0xyz", "board7", kMac)));
  // A character without a narrow form ends one value of the list, but all of the text.
  pc.Set(kProduct, L"IdentifyingNumber", L"AB\x0142 C");
  EXPECT_THAT(CollectList({2, 0}), Optional(ElementsAre("1234abcd", "ab", "board7", kMac)));
  EXPECT_EQ(CollectString({1, 5}), "1234abcdab");
  pc.Set(kProduct, L"IdentifyingNumber", L"0");
  pc.Set(kVolume, L"VolumeSerialNumber", L" ");
  pc.Set(L"Win32_BaseBoard", L"SerialNumber", L"00");
  EXPECT_THAT(CollectList({1, 0}), Optional(ElementsAre(" ", "00", kMac)));
  EXPECT_EQ(CollectString({1, 5}), std::string(" 000") + kMac);
  pc.LoseHardware();
  EXPECT_THAT(CollectList({2, 0}), Optional(ElementsAre()));
}

TEST_F(WmiTest, PlaceholdersAreEmptyAndTheRestIsFolded) {
  const std::string oem = "to be filled by o.e.m.";
  const std::tuple<std::wstring, std::string, bool> cases[] = {
      {L"00000000-0000-0000-0000-000000000000", "00000000-0000-0000-0000-000000000000", true},
      {L"FFFFFFFF-ffff-FFFF-FFFF-FFFFFFFFFFFF", "ffffffff-ffff-ffff-ffff-ffffffffffff", true},
      {L"To Be Filled By O.E.M.", oem, true},
      {L"To be filled by O.E.M. ", oem + " ", false},
      {{L"To be filled by O.E.M.\0X", 24}, oem, false},
      {L"00000000-0000-0000-0000-@[`{AZ\xc9", "00000000-0000-0000-0000-@[`{az\xc9", false},
  };
  for (const auto& [value, folded, placeholder] : cases) {
    pc.Set(kVolume, L"VolumeSerialNumber", value);
    EXPECT_EQ(CollectList({1, 1}).value().front(), folded);
    EXPECT_EQ(CollectList({1, 2}).value().front(), placeholder ? "pf0xyz" : folded) << folded;
  }
  // Addresses are never filtered, and the volume is not before format 1.2.
  for (auto& [class_text, rows] : pc.wmi) {
    for (auto& [property, value] : rows[0]) value = L"To be filled by O.E.M.";
  }
  pc.adapters.clear();
  EXPECT_EQ(CollectString({1, 1}), oem + oem);
  for (const std::uint32_t minor : {2u, 5u}) EXPECT_EQ(CollectString({1, minor}), oem);
}

}  // namespace
}  // namespace system_info
