// What stories cannot tell of explanations: an account of Windows, a kept copy that differs, the
// text for people.

#include "inspection/explanation.h"

#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/played_call.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

StoredFile Stored(const std::string& bytes) {
  if (bytes == "<missing>") return {};
  StoredFile file;
  file.state = StoredFile::State::kRead;
  file.bytes = bytes;
  return file;
}

class ExplanationTest : public MachineTest {
 protected:
  StateFolder Folder(StateFolder::Kind kind) {
    const auto read = [this](const char* name) { return Stored(ReadFileText(pc.Common(name))); };
    return {kind, "/common", read("device.idv2"), read("device.id"), read("hid_settings")};
  }

  Explanation Explain(bool windows = false) {
    const auto hardware = ReadThisMachine();
    MachineState machine;
    machine.format = "2.0";
    machine.windows = windows;
    machine.administrator = !windows;
    machine.folders = {Folder(StateFolder::Kind::kCommon)};
    machine.next = PlayCall(PlayedExport::kGet, "2.0", 0, *hardware);
    machine.recheck = PlayCall(PlayedExport::kRecheck, "2.0", 0, *hardware);
    machine.hardware = CollectList(HidFormatVersion(2, 0), &machine.hardware_log);
    return ExplainMachine(machine);
  }

  void SetSerialNumbers(const WmiValue& product, const WmiValue& board) {
    pc.Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", product);
    pc.Set(L"Win32_BaseBoard", L"SerialNumber", board);
  }
};

TEST_F(ExplanationTest, CountsTheChangesThatAreLeft) {
  GetId("2.0");
  EXPECT_EQ(Explain().changes_left, 1u);
  EXPECT_EQ(ExplainLog("no log").sentence, "This is not the log of a call.");
}

TEST_F(ExplanationTest, CannotTellTwoSerialNumbersOfWindowsApart) {
  SetSerialNumbers(L"0", L"BOARD7");
  GetId("2.0");
  SetSerialNumbers(L"0", L"");
  pc.adapters.clear();
  pc.wmi[L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"].clear();
  EXPECT_EQ(Explain(true).sentence,
            "The product or board and the network can no longer be read. Of 1 place that can be "
            "compared, 1 agrees, and 1 has to. Any change will give a new id.");
  pc.PassDays(10);
  EXPECT_EQ(ExplainLog(GetId("2.0").log).sentence,
            "Two of three stored parts could not be read. Of 1 place that can be compared, 1 "
            "agrees, and 1 has to. The call gave the stored id.");
}

TEST_F(ExplanationTest, TellsOfARecordThatAnotherAccountMade) {
  pc.adapters[0].name = "tun0";  // As on Linux.
  SetSerialNumbers({}, {});
  GetId("2.0");
  SetSerialNumbers(L"PF0XYZ", L"BOARD7");
  pc.PassDays(10);
  EXPECT_EQ(
      Explain().sentence,
      "The product and the board can be read by root, and could not be by the account that made "
      "the record. Of 2 places that can be compared, 1 agrees, and 2 have to. The next call gives "
      "this account another id.");
  // A value that fails on the way is another matter.
  SetSerialNumbers({}, L"BOARD7");
  pc.Fail(PlatformCall::kExecQuery, 0x80041001, "Win32_BaseBoard");
  GetId("2.0");
  SetSerialNumbers(L"PF0XYZ", L"BOARD7");
  EXPECT_TRUE(Explain().sentence.starts_with("The product can be read now, and could not when"));
}

TEST_F(ExplanationTest, NamesWhatDiffersFromAKeptCopy) {
  const std::string id = GetId("2.0").id;
  SetSerialNumbers(L"PF0XYZ", L"BOARD8");
  Explanation explanation = Explain();
  StateFolder kept = Folder(StateFolder::Kind::kCopy);
  kept.idv2.bytes = "1-6-01234567-89ab-cdef-0123-456789abcdef";
  CompareWithKept(explanation, {Folder(StateFolder::Kind::kCommon)}, kept);
  std::string differences;
  for (const Difference& d : *explanation.against) differences += d.what + " " + *d.kept + ", ";
  EXPECT_EQ(differences, "id 2-0-01234567-89ab-cdef-0123-456789abcdef, device.idv2 " +
                             kept.idv2.bytes + ", board board7, ");
}

TEST_F(ExplanationTest, IsReadByPeople) {
  GetId("2.0");
  pc.adapters[1].address = {0x02, 0x11, 0x22, 0x33, 0x44, 0x55};
  const TextStyle style = {false, [](std::int64_t time) { return UtcText(time).substr(0, 10); }};
  EXPECT_EQ(ToText(Explain(), style),
            "KEPT  1 of 4 parts has changed, and one change is forgiven. One more will give a\n"
            "      new id.\n"
            "\n"
            "  part     when stored          now\n"
            "  volume   1234abcd             1234abcd             same\n"
            "  product  pf0xyz               pf0xyz               same\n"
            "  board    board7               board7               same\n"
            "  network  00:1a:2b:c3:d4:0f    02:11:22:33:44:55    changed\n"
            "\n"
            "  id       2-0-e605da79-8246-9201-b359-b533fafc9984\n"
            "  stored   2023-11-14 in /common, for all accounts\n"
            "  next     compared again from 2023-11-24 on; 3 of 4 have to agree, 3 do\n"
            "  do       nothing\n"
            "  note     The network \"02:11:22:33:44:55\" is an address that software has set\n"
            "           and can set anew.\n");

  Explanation wild = Explain();
  wild.sentence = "a\nb\x1b[2J\xe9";
  wild.parts = {
      {{PartName::kProduct, PartName::kBoard}, std::string(200, 'x'), "\x9b", PartState::kGone}};
  wild.warnings.clear();
  const std::string text = ToText(wild, {true, style.date});
  EXPECT_TRUE(text.starts_with("\x1b[1;32mKEPT\x1b[0m  a\\x0ab\\x1b[2J\xc3\xa9\n")) << text;
  EXPECT_NE(text.find("  product or board  xxxxxxxxxxxxxxxxxxxxxxxx  \\xc2\\x9b"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n                    xxxxxxxxxxxxxxxxxxxxx...\n"), std::string::npos)
      << text;
  EXPECT_NE(ToJson(wild).find("\"sentence\": \"a\\nb\\u001b[2J\xc3\xa9\""), std::string::npos);
}

}  // namespace
}  // namespace system_info
