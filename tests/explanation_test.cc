// What is said about machines, copied folders and logs. The files lie on a scripted machine, and
// all logs are those of real calls.

#include "inspection/explanation.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "api/request.h"
#include "hardware/windows_os_manager.h"
#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;

// What the ordinary machine gives, with both disk and board replaced, and an id from elsewhere.
const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";
const std::string kOtherId = "2-0-0d279e0a-c3c2-393f-256c-e20d6ff74d62";
const std::string kOldId = "2-0-01234567-89ab-cdef-0123-456789abcdef";

std::string Stored(const std::string& id) { return "1-6-" + id.substr(4); }

StoredFile ReadStored(const std::string& path) {
  StoredFile file;
  if (!fs::exists(path)) return file;
  file.state = StoredFile::State::kRead;
  file.bytes = ReadFileText(path);
  return file;
}

// "forgiven 0, board changed: SENTENCE": what there is to say, and each part that is not the same.
std::string Summary(const Explanation& explanation) {
  const char* verdict = TextOf(explanation.verdict);
  std::string text = verdict != nullptr ? verdict : "null";
  text += " " + std::to_string(explanation.status);
  for (const Part& part : explanation.parts) {
    if (part.state == PartState::kSame || part.state == PartState::kUnknown) continue;
    text += ", " + NameOf(part) + " " + TextOf(part.state);
  }
  return text + ": " + explanation.sentence;
}

class ExplanationTest : public MachineTest {
 protected:
  // For explain_schema_test.py.
  static Explanation Keep(const Explanation& explanation) {
    if (const char* path = std::getenv("DEVICEID_EXPLANATIONS")) {
      std::ofstream(path, std::ios::app) << ToJson(explanation) << ",\n";
    }
    return explanation;
  }

  // Makes a call on a copy of the files, which stay as they are.
  PlayedCall Play(Request request) {
    const fs::path folder = fs::path(*pc.common_root).parent_path();
    const fs::path kept = folder.string() + "-kept";
    fs::copy(folder, kept, fs::copy_options::recursive);
    const std::string before = ReadFileText(pc.Common("device.idv2"));
    std::shared_ptr<HIDLog> log;
    char id[64] = "";
    char unused = 0;
    request.buffers = {id, sizeof(id), &unused, 0};
    PlayedCall call;
    call.result = Answer(request, [&log](const std::shared_ptr<HIDLog>& of_call) {
      log = of_call;
      return std::make_unique<WindowsOSManager>(of_call);
    });
    std::vector<char> text(1 << 16);
    log->CopyTo(text.data(), 1 << 16);
    call.log = text.data();
    if (call.result == HidResult::Success) call.id = id;
    call.random = call.id && before != Stored(id) && CollectString(HidFormatVersion(2, 0)).empty();
    fs::remove_all(folder);
    fs::rename(kept, folder);
    return call;
  }

  StateFolder Folder(StateFolder::Kind kind) {
    const bool common = kind != StateFolder::Kind::kUser;
    const auto read = [&](const char* name) {
      return ReadStored(common ? pc.Common(name) : pc.User(name));
    };
    return {kind, common ? "/common" : "/user", read("device.idv2"), read("device.id"),
            read("hid_settings")};
  }

  std::vector<StateFolder> Folders() {
    return {Folder(StateFolder::Kind::kCommon), Folder(StateFolder::Kind::kUser)};
  }

  Explanation Explain(const char* format = "2.0") {
    MachineState machine;
    machine.format = format;
    machine.windows = windows;
    machine.administrator = administrator;
    machine.folders = Folders();
    machine.next = Play(GetRequest({}, format));
    if (machine.format == "2.0") machine.recheck = Play(RecheckRequest({}, format));
    machine.hardware = CollectList(HidFormatVersion(2, 0), &machine.hardware_log);
    return Keep(ExplainMachine(machine));
  }

  Explanation ExplainCall(const char* format = "2.0") {
    return Keep(ExplainLog(Play(GetRequest({}, format)).log));
  }

  // What the machine and the log of its next call tell.
  void Expect(const std::string& of_machine, const std::string& of_log,
              const char* format = "2.0") {
    EXPECT_EQ(Summary(Explain(format)), of_machine);
    EXPECT_EQ(Summary(ExplainCall(format)), of_log);
  }

  static std::string Warnings(const Explanation& explanation) {
    std::string codes;
    for (const Warning& warning : explanation.warnings) codes += warning.code + " ";
    return codes;
  }

  void Days(std::int64_t days) { pc.ticks += days * 86400 * 10'000'000; }
  void SetBoard(const wchar_t* text) { pc.Set(L"Win32_BaseBoard", L"SerialNumber", text); }
  void SetVolume(const wchar_t* text) {
    pc.Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", text);
  }
  // A machine as root, or an ordinary account, sees it on Linux.
  void BeLinux(bool root) {
    administrator = root;
    const WmiValue none;
    pc.Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", root ? WmiValue(L"PF0XYZ") : none);
    pc.Set(L"Win32_BaseBoard", L"SerialNumber", root ? WmiValue(L"BOARD7") : none);
    pc.adapters[0].name = "tun0";
  }

  bool windows = false;
  bool administrator = true;
};

TEST_F(ExplanationTest, TellsOfChangedParts) {
  Expect("new-machine 0: Nothing is stored. The next call makes the id from the hardware.",
         "new-machine 0: Nothing was stored. The call made the id from the hardware.");
  GetId("2.0");
  Expect(
      "same 0: All 4 parts agree. One change is forgiven.",
      "same 0: The record was younger than ten days, so the call gave the stored id. The hardware "
      "gives the same id.");
  EXPECT_EQ(Summary(Keep(ExplainFolder(Folder(StateFolder::Kind::kCopy)))),
            "null 0: The id and its record are good. Whether the hardware still fits shows on its "
            "machine only.");
  EXPECT_EQ(Summary(ExplainLog("no log")), "null 20: This is not the log of a call.");
  EXPECT_EQ(Explain().changes_left, 1u);
  SetBoard(L"BOARD8");
  SetVolume(L"DEADBEEF");
  Days(10);
  EXPECT_EQ(
      Summary(Explain()),
      "changes-now 10, volume changed, board changed: 2 of 4 parts have changed, and only one "
      "change is forgiven. The next call gives a new id.");
  EXPECT_EQ(ExplainCall().id, kOtherId);
  Days(-10);
  pc.Set(L"Win32_BaseBoard", L"SerialNumber", {});
  SetVolume(L"1234ABCD");
  EXPECT_EQ(
      Summary(Explain()),
      "will-change 10, board gone, network moved: The board can no longer be read. Of 3 places "
      "that can be compared, 2 agree, and 3 have to. The id stays until the next comparison, "
      "which will give a new id.");
  pc.LoseHardware();
  const Explanation nothing = Explain();
  EXPECT_EQ(nothing.recheck->id, std::nullopt);
  EXPECT_EQ(nothing.sentence,
            "No part can be read. The id stays until the next comparison, which "
            "will give a random id.");
}

TEST_F(ExplanationTest, TellsOfPartsThatComeAndGo) {
  pc.Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", L"0");
  GetId("2.0");
  Days(10);
  Expect("same 0: All 3 parts agree. Any change will give a new id.",
         "same 0: All 3 parts agree. The call gave the stored id.");
  pc.adapters.clear();
  pc.wmi[L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"].clear();
  EXPECT_EQ(Summary(Explain()),
            "forgiven 0, network gone: The network can no longer be read. Of 2 places that can be "
            "compared, 2 agree, and 2 have to. Any change will give a new id.");
  SetBoard(L"");
  windows = true;
  administrator = false;
  Expect(
      "forgiven 0, product or board gone, network gone: The product or board and the network can "
      "no "
      "longer be read. Of 1 place that can be compared, 1 agrees, and 1 has to. Any change will "
      "give "
      "a new id.",
      "forgiven 0: Two of three stored parts could not be read. Of 1 place that can be compared, 1 "
      "agrees, and 1 has to. The call gave the stored id.");
}

TEST_F(ExplanationTest, TellsOfMissingAndDamagedFiles) {
  GetId("2.0");
  const std::string record = ReadFileText(pc.Common("hid_settings"));
  SetBoard(L"BOARD8");
  WriteFileText(pc.Common("hid_settings"), record.substr(0, 60));
  Expect(
      "made-anew 10: The record in /common is damaged (it ends in its date), so the next call "
      "makes the id anew from the hardware. It will be another one.",
      "made-anew 10: There was no record hid_settings that could be read, so the call made the id "
      "anew from the hardware. It became another one, in place of " +
          kId + ".");
  EXPECT_EQ(
      Summary(ExplainFolder(Folder(StateFolder::Kind::kCopy))),
      "made-anew 10: The record in /common is damaged (it ends in its date). A call makes the id "
      "anew from the hardware, so it stays only where that is the same.");
  WriteFileText(pc.Common("hid_settings"), StoredRecord::Text("x y"));
  Expect(
      "failed 20: The record in /common is damaged (its version is none): each call ends with "
      "result 3.",
      "failed 20: The call failed with result 3, since the record hid_settings is damaged (invalid "
      "stoi argument).");

  WriteFileText(pc.Common("hid_settings"), record);
  WriteFileText(pc.Common("device.idv2"), Stored(kId) + "\r\n");
  Expect(
      "no-id 20, board changed: device.idv2 in /common is damaged (a line end stands at the id), "
      "and there is a record: each call ends with result 4.",
      "no-id 20: device.idv2 was damaged (a line end stands at the id), and there was a record: "
      "the "
      "call ended with result 4.");
  EXPECT_EQ(Explain().advice,
            "Put the id of the record, " + kId + ", back into its file: deviceid repair restore.");
  WriteFileText(pc.Common("device.id"), Stored(kOldId));
  const std::string lead = "(a line end stands at the id), so the older id of device.id st";
  Expect(
      "not-compared 0, board changed: device.idv2 in /common is damaged " + lead +
          "ands in for it. The record belongs to " + kId +
          ", so the hardware is not compared, and calls give the older id.",
      "not-compared 0: device.idv2 was damaged " + lead +
          "ood in for it. The record was younger than ten days, so the call gave that id without a "
          "comparison.");
  EXPECT_EQ(Explain().id, kOldId);

  WriteFileText(pc.Common("device.idv2"), Stored(kId));
  WriteFileText(pc.User("device.idv2"), Stored(kId));
  EXPECT_TRUE(Explain().sentence.starts_with("1 of 4"));
  WriteFileText(pc.User("device.idv2"), Stored(kOldId));
  EXPECT_EQ(Explain("1.6").sentence,
            "The id of format 1.6 is stored, and stays whatever the hardware does.");
  EXPECT_TRUE(
      Explain().sentence.starts_with("The two folders hold different ids. The one in /common "
                                     "counts, and the next call removes the other. 1 of 4"));
  WriteFileText(pc.Common("device.idv2"), Stored(kOldId));
  EXPECT_EQ(ExplainFolder(Folder(StateFolder::Kind::kCopy)).sentence,
            "The record belongs to another id, " + kId + ", so the hardware is not compared.");
  Explanation explanation = Explain();
  StateFolder kept = Folder(StateFolder::Kind::kCopy);
  kept.idv2.bytes = Stored(kId);
  CompareWithKept(explanation, Folders(), kept);
  std::string differences;
  for (const Difference& d : *explanation.against) differences += d.what + " " + *d.kept + ", ";
  EXPECT_EQ(differences, "id " + kId + ", device.idv2 " + Stored(kId) + ", board board7, ");
  fs::remove(pc.Common("device.idv2"));
  fs::remove(pc.Common("device.id"));
  fs::remove(pc.User("device.idv2"));
  EXPECT_EQ(Summary(Explain()),
            "no-id 20, board changed: No file holds an id, and there is a record: "
            "each call ends with result 4.");
}

TEST_F(ExplanationTest, TellsOfHardwareThatCannotBeListed) {
  GetId("2.0");
  pc.Fail(PlatformCall::kConnectServer, 0x80041003);
  EXPECT_EQ(
      Summary(Explain()),
      "cannot-compare 10: The hardware cannot be listed now (Failed to connect server). The id "
      "stays until the next comparison, which will end with result 4.");
  Days(10);
  Expect(
      "cannot-compare 20: A comparison is due, and the hardware cannot be listed (Failed to "
      "connect "
      "server): the next call ends with result 4.",
      "cannot-compare 20: A comparison was due, and the hardware could not be listed (Failed to "
      "connect server): the call ended with result 4.");
  fs::remove(pc.Common("hid_settings"));
  Expect(
      "made-anew 0: The record hid_settings is missing, and no part can be read to make the id "
      "anew. It stays.",
      "made-anew 0: There was no record hid_settings that could be read, and no part could be read "
      "to make the id anew. It stayed.");
}

TEST_F(ExplanationTest, TellsAnAccountWhatRootReads) {
  BeLinux(true);
  GetId("2.0");
  BeLinux(false);
  EXPECT_EQ(
      Summary(ExplainCall()),
      "not-compared 0: The record was younger than ten days, so the call gave the stored id. This "
      "account cannot read the serial numbers of product and board, and without them the hardware "
      "gives another id.");
  Days(10);
  const std::string why =
      "The product and the board can be read by root, and not by this account. Of 2 places that "
      "can be "
      "compared, 1 agrees, and 2 have to. The ";
  Expect("changes-now 10, product gone, board gone, network moved: " + why +
             "next call gives this account another id.",
         "changes-now 10, product gone, board gone: " + why +
             "call gave this account a new id in place of " + kId + ".");
  EXPECT_EQ(Explain().warnings[0].text,
            "Root reads the product \"pf0xyz\" and the board \"board7\".");
  GetId("2.0");
  BeLinux(true);
  Days(10);
  EXPECT_EQ(
      Explain().sentence,
      "The product and the board can be read by root, and could not be by the account that made "
      "the record. Of 2 places that can be compared, 1 agrees, and 2 have to. The next call gives "
      "this account another id.");
  // A value that fails on the way is another matter.
  pc.Fail(PlatformCall::kExecQuery, 0x80041001, "Win32_BaseBoard");
  BeLinux(false);
  administrator = true;
  GetId("2.0");
  BeLinux(true);
  EXPECT_TRUE(Explain().sentence.starts_with("The product can be read now, and could not when"));
}

TEST_F(ExplanationTest, TellsOfRandomIdsAndOlderFormats) {
  pc.LoseHardware();
  Expect(
      "new-machine 0: Nothing is stored. The next call makes a random id, since no part can be "
      "read.",
      "new-machine 0: Nothing was stored. The call made a random id, since no part could be read.");
  EXPECT_EQ(ExplainCall().id, std::nullopt);
  GetId("2.0");
  EXPECT_EQ(Summary(Explain()),
            "not-compared 0: The record belongs to a random id, which is never "
            "compared with the hardware. The id stays.");
  EXPECT_EQ(ExplainFolder(Folder(StateFolder::Kind::kCopy)).sentence,
            "The record belongs to a random id, which is never compared with the hardware.");
  EXPECT_EQ(
      Summary(ExplainCall("1.5")),
      "from-hardware 10: No part could be read, so the id of format 1.5 rests on a number that "
      "the call drew.");
  WriteFileText(pc.Common("device.id"), kId);
  Expect("stored 0: The id of format 1.6 is stored, and stays whatever the hardware does.",
         "stored 0: The call gave the stored id of format 1.6, which stays whatever the hardware "
         "does.",
         "1.6");
}

TEST_F(ExplanationTest, WarnsOfWhatMayBecomeAProblem) {
  SetBoard(L"Default string");
  GetId("2.0");
  Days(-1);
  SetBoard(L"DEFAULT-STRING");
  WriteFileText(pc.Common("hid_settings"), ReadFileText(pc.Common("hid_settings")) + "x");
  pc.pci_devices.clear();
  EXPECT_EQ(Warnings(Explain()),
            "respelled doubtful-part doubtful-part trailing-bytes adapter-choice "
            "future-record ");
  fs::remove(pc.Common("hid_settings"));
  pc.Fail(PlatformCall::kCreateFile, 5, "common");
  EXPECT_EQ(Warnings(ExplainCall()), "doubtful-part doubtful-part adapter-choice own-id ");
  pc.Fail(PlatformCall::kCreateFile, 5);
  pc.Fail(PlatformCall::kCreateDirectory, 5, "user");
  fs::remove_all(fs::path(pc.User("")).parent_path());
  WriteFileText(pc.OldUser("device.id"), Stored(kId));
  EXPECT_EQ(Warnings(ExplainCall()),
            "doubtful-part doubtful-part adapter-choice id-not-stored not-carried-over ");
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
