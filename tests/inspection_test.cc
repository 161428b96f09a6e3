// What can be told from the bytes of files and logs alone: stored files, parts, the facts of a
// call.

#include <array>
#include <fstream>
#include <regex>
#include <sstream>

#include "inspection/hardware_parts.h"
#include "inspection/log_facts.h"
#include "inspection/redacted_log.h"
#include "inspection/saved_log.h"
#include "inspection/shown_text.h"
#include "inspection/stored_bytes.h"
#include "storage/hid_settings.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

using namespace std::string_literals;

const std::string kStoredId = "1-6-e605da79-8246-9201-b359-b533fafc9984";

// As Windows programs save text; the characters are those of Latin-1.
std::string Utf16(const std::string& text, bool big_endian) {
  std::string bytes;
  for (const char c : text) bytes += big_endian ? "\0"s + c : c + "\0"s;
  return bytes;
}

TEST(StoredBytes, TellAnIdInUtf16) {
  const std::string id = kStoredId + "\n";
  for (const std::string& bytes : {"\xff\xfe" + Utf16(id, false), Utf16(id, true)}) {
    EXPECT_EQ(JudgeIdBytes(bytes).damage, "it is in UTF-16, a line end stands at the id");
    EXPECT_EQ(JudgeIdBytes(bytes).legible, kStoredId);
  }
  EXPECT_STREQ(TextOf(JudgeIdBytes(kStoredId).state), "good");
  EXPECT_STREQ(TextOf(JudgeIdBytes("").state), "empty");
}

using StoredBytesTest = MachineTest;

// What the library does with a record: reads it, removes it, or fails.
RecordUse UseByLibrary(const ScriptedMachine& pc, const std::string& bytes, std::string& failure) {
  const std::string path = pc.Common("hid_settings");
  WriteFileText(path, bytes);
  try {
    return ReadHidSettingsFile(path.substr(0, path.rfind('/'))) ? RecordUse::kRead
                                                                : RecordUse::kRemoved;
  } catch (const std::exception& thrown) {
    failure = thrown.what();
    return RecordUse::kFatal;
  }
}

TEST_F(StoredBytesTest, AreARecordWhereTheLibraryReadsOne) {
  StoredRecord record;
  record.device_id = kStoredId;
  record.ids = {"a", "", "\x01"};  // A byte of it may become that of a length, and of memory.
  const std::string good = record.Bytes();
  std::vector<std::string> all;
  for (std::size_t cut = 0; cut <= good.size(); ++cut) all.push_back(good.substr(0, cut));
  for (std::size_t place = 0; place < good.size(); ++place) {
    all.push_back(good);
    all.back()[place] ^= place % 4 == 3 ? '\x80' : '\x01';
  }
  for (const char* version : {"", "2", "x y", "99999999999.0"}) {
    record.version = version;
    all.push_back(record.Bytes());
  }
  for (const std::size_t count : {256u, 257u}) {
    all.push_back(good.substr(0, 63) + StoredRecord::Number(count, 4) +
                  std::string(4 * count, '\0'));
  }
  for (const std::string& bytes : all) {
    const RecordContent content = DecodeRecord(bytes);
    std::string failure;
    EXPECT_EQ(content.use, UseByLibrary(pc, bytes, failure)) << testing::PrintToString(bytes);
    EXPECT_EQ(content.failure, failure);
    const bool good_id = content.device_id && IsValidDeviceId(*content.device_id);
    EXPECT_EQ(content.damage.empty(),
              bytes.empty() || (content.use == RecordUse::kRead && good_id));
  }
  const RecordContent content = DecodeRecord(good + "xyz");
  EXPECT_EQ(content.device_id, kStoredId);
  EXPECT_EQ(Join(content.parts), "a\x01");
  EXPECT_EQ(content.parts.size(), 2u);
  EXPECT_EQ(content.trailing_bytes, 3u);
  EXPECT_EQ(DecodeRecord(good.substr(0, 70)).damage, "it ends in its length of the part 1");
  EXPECT_EQ(DecodeRecord(StoredRecord::Number(5, 4) + "2.0").damage,
            "the length of its version is 5, and 3 bytes are left");
}

TEST(HardwareParts, AreNamedByTheirFormWithoutPresentValues) {
  std::string told;
  for (const Part& part : CompareParts({"x", "00:1a:2b:c3:d4:0f"}, std::nullopt)) {
    told += NameOf(part) + " " + TextOf(part.state) + ", ";
  }
  EXPECT_EQ(told, "product or board unknown, network unknown, ");
}

TEST(HardwareParts, AreDoubtedIfOthersHaveThem) {
  using enum PartName;
  const auto doubted = [](PartName name, const char* text) {
    return !DoubtAbout(name, text).empty();
  };
  for (const char* text : {"default string", "None", "0000", "x", " ", "to be filled by o.e.m"}) {
    EXPECT_TRUE(doubted(kBoard, text)) << text;
  }
  for (const char* text : {"00:50:56:c0:00:01", "02:00:00:00:00:01", "00:00:00:00:00:00"}) {
    EXPECT_TRUE(doubted(kNetwork, text)) << text;
  }
  EXPECT_FALSE(doubted(kBoard, "board7") || doubted(kNetwork, "00:1a:2b:c3:d4:0f"));
  EXPECT_FALSE(doubted(kProduct, "00:50:56:c0:00:01"));
  EXPECT_FALSE(IsSameTextRespelled("board 7", "board 8") || IsSameTextRespelled("-", "."));
}

// Every fact as one text each.
std::set<std::string> Told(const LogFacts& facts) {
  std::set<std::string> told;
  const auto tell = [&told](const std::string& name, const auto& value) {
    std::ostringstream text;
    text << value;
    if (!text.str().empty()) told.insert(name + " " + text.str());
  };
  tell(facts.call, facts.format);
  if (facts.age) tell("age", *facts.age);
  if (facts.runtime_id) tell("runtime id", *facts.runtime_id);
  if (facts.record_read) tell("record", *facts.record_read);
  if (facts.random) tell("random", 1);
  if (facts.end) tell("end", static_cast<int>(*facts.end));
  if (facts.failure) tell("failure", *facts.failure);
  if (facts.counts) tell("counts", facts.counts->matches * 100 + facts.counts->runtime);
  for (const IdSearch* search : {&facts.idv2, &facts.id}) {
    const std::string name = search == &facts.id ? "id" : "idv2";
    if (search->place) tell(name, search->text);
    if (search->good) tell(name, *search->good);
    for (const std::string& error : search->read_errors) tell(name, error);
  }
  for (const HardwareReading& reading : facts.readings) {
    const std::string name = std::to_string(&reading - facts.readings.data());
    tell(name, reading.failure);
    for (const ReadValue& value : reading.values)
      tell(name + TextOf(value.name), value.text + value.failure);
    for (const Adapter& adapter : reading.adapters) tell(name, adapter.name + adapter.address);
    if (reading.adapter_rule) tell(name + " rule", static_cast<int>(*reading.adapter_rule));
  }
  for (const CarryOver& carried : facts.carried_over) {
    if (carried.end) tell(carried.old_folder, static_cast<int>(*carried.end));
  }
  for (const std::string& error : facts.common_write_errors) tell("common", error);
  for (const std::string& error : facts.user_write_errors) tell("user", error);
  return told;
}

class LogFactsTest : public MachineTest {
 protected:
  // Logs of calls that end in many ways.
  std::vector<std::string> SomeLogs() {
    std::vector<std::string> logs;
    WriteFileText(pc.OldCommon("device.id"), kStoredId);
    logs.push_back(GetId("2.0").log);
    WriteFileText(pc.Common("device.idv2"), "bad\r\n\ntext");
    pc.pci_devices[0].instance_id = "{GONE}";
    logs.push_back(Recheck("2.0").log);
    pc.pci_devices.clear();
    logs.push_back(GetId("1.0").log);
    pc.Fail(PlatformCall::kGetAdaptersInfo, 111);
    pc.Fail(PlatformCall::kExecQuery, 0x80041001, "Win32_BaseBoard");
    pc.Fail(PlatformCall::kGetWindowsDirectory, 0);
    pc.Fail(PlatformCall::kCreateFile, 5);
    logs.push_back(GetId("1.6").log);
    pc.Recover();
    pc.PassDays(10);
    logs.push_back(GetId("2.0").log);
    return logs;
  }
};

TEST_F(LogFactsTest, AreReadFromLogsOfCalls) {
  const std::vector<std::string> logs = SomeLogs();
  const LogFacts first = ReadLogFacts(logs[0]);
  EXPECT_EQ(first.call + first.format, "GetHardwareId2.0");
  EXPECT_EQ(first.carried_over[0].end, CarryOver::End::kCopied);
  EXPECT_EQ(first.Loaded(), &first.id);
  EXPECT_EQ(first.id.text, kStoredId);
  EXPECT_EQ(first.end, CallEnd::kMadeAnew);
  EXPECT_EQ(first.readings[1].adapter_rule, AdapterRule::kPci);
  EXPECT_EQ(first.readings[1].Joined(), "1234abcdpf0xyzboard700:1a:2b:c3:d4:0f");
  EXPECT_EQ(first.readings[1].adapters[0].description, "Tunnel");

  const LogFacts recheck = ReadLogFacts(logs[1]);
  EXPECT_EQ(recheck.idv2.text, "bad\r\n\ntext");
  EXPECT_TRUE(recheck.age_ignored && recheck.age == 0);
  EXPECT_EQ(recheck.counts->matches * 100 + recheck.counts->stored * 10 + recheck.counts->runtime,
            344u);
  EXPECT_EQ(recheck.readings[0].values[3].text, "02:00:00:00:00:01");
  EXPECT_EQ(recheck.readings[0].adapter_rule, AdapterRule::kFirstPciMissing);

  EXPECT_EQ(ReadLogFacts(logs[2]).readings[0].values[0].name, PartName::kUuid);
  EXPECT_TRUE(ReadLogFacts(logs[2]).readings[0].whole);

  const LogFacts failing = ReadLogFacts(logs[3]);
  EXPECT_EQ(failing.end, CallEnd::kFromHardware);
  EXPECT_EQ(failing.id.read_errors.size(), 2u);
  EXPECT_EQ(failing.user_write_errors.at(0), "Can not open file to write");
  const HardwareReading& reading = failing.readings[0];
  EXPECT_EQ(reading.values[0].failure, "Could not get ID of volume HDD");
  EXPECT_EQ(reading.values[2].failure, "Failed to execute query");
  EXPECT_EQ(reading.adapter_failure, "GetAdaptersInfo failed with code = 111");
  EXPECT_EQ(reading.adapter_rule, AdapterRule::kAskedWmi);
  EXPECT_EQ(reading.Joined(), "pf0xyz00:50:56:c0:00:01");
  EXPECT_EQ(ReadLogFacts(logs[0] + logs[4]).calls, 2u);
  EXPECT_EQ(Told(ReadLogFacts(logs[0] + logs[4])), Told(ReadLogFacts(logs[4])));
}

TEST_F(LogFactsTest, AreFewerOfALogThatWasCut) {
  for (const std::string& log : SomeLogs()) {
    const auto all = Told(ReadLogFacts(log));
    for (std::size_t cut = 60; cut < log.size(); ++cut) {
      for (const std::string& fact : Told(ReadLogFacts(log.substr(0, cut)))) {
        ASSERT_TRUE(all.contains(fact)) << fact << " of\n" << log.substr(0, cut);
      }
    }
  }
}

TEST_F(LogFactsTest, AreThoseOfALogHoweverItWasSaved) {
  const auto lines = [](const std::string& log, const std::string& end) {
    return std::regex_replace(log, std::regex("\n"), end);
  };
  for (const std::string& log : SomeLogs()) {
    EXPECT_EQ(RestoreLog(log), log);
    EXPECT_EQ(RestoreLog(lines(log, "\r\n")), log);
    EXPECT_EQ(RestoreLog("\xef\xbb\xbf" + log), log);
    EXPECT_EQ(RestoreLog("\xff\xfe" + Utf16(lines(log, "\r\n"), false)), log);
    EXPECT_EQ(RestoreLog(Utf16(log, true)), log);
    EXPECT_EQ(RestoreLog(log + "\0debug] left over\n\0\0"s), log);
    EXPECT_EQ(RestoreLog(log + "\0"s + log), log + log);
    EXPECT_EQ(RestoreLog(log + "deviceid: no id\n" + kStoredId + "\n"), log);
  }
  const std::string log = GetId("1.5").log;
  EXPECT_EQ(RestoreLog(lines(log, "\r")), log);
}

TEST(LogFacts, ComeFromTheTextsOfTheManual) {
  std::ifstream file(DEVICEID_SOURCE_DIR "/docs/log.md");
  std::set<std::string> manual = {"", "Network Adapters List:<>"};
  const std::regex row("^\\| `(.*?)` \\|.*");
  for (std::string line; std::getline(file, line);) {
    std::smatch found;
    if (!std::regex_match(line, found, row)) continue;
    manual.insert(std::regex_replace(found[1].str(), std::regex("<.*?>"), "<>"));
  }
  for (const std::string& text : KnownLogTexts()) EXPECT_TRUE(manual.contains(text)) << text;
  Redactor redactor("a key");
  for (const std::string& text : manual) {
    if (text == "<>") continue;
    const std::string line =
        "[09:05:03:107] [Debug] " + std::regex_replace(text, std::regex("<>"), "1");
    const std::string redacted = RedactLog(line + "\n", redactor);
    EXPECT_FALSE(redacted.ends_with("] (left out)\n")) << text;
  }
}

TEST(ShownText, IsUtf8AndHarmless) {
  EXPECT_EQ(ToUtf8("a\xe9\xc3\xa9\xed\xa0\x80\xf0\x9f\x92\xa9\xc0\x80"s),
            "a\u00e9\u00e9\u00ed\u00a0\u0080\U0001f4a9\u00c0\u0080");
  EXPECT_EQ(Harmless("\x1b[0m\x7f\u202e\u2066\u0085\t\xff"s),
            "\\x1b[0m\\x7f\\xe2\\x80\\xae\\xe2\\x81\\xa6\\xc2\\x85\\x09\u00ff");
  EXPECT_EQ(FromUtf16("\xff\xfe\x01\xdc\xe9\0\x3d\xd8\xa9\xdc\xac\x20\x3d\xd8"s),
            "\ufffd\xe9\U0001f4a9\u20ac");
}

}  // namespace
}  // namespace system_info
