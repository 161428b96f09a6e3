// Format 2.0: what each outcome returns, leaves behind and says, and the lives of machines.

#include <fstream>
#include <map>
#include <sstream>

#include "identity/device_id.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

using Lines = std::vector<std::string>;
using testing::HasSubstr;

// The body of the id that the scripted machine's hardware gives, by md5sum, and of two others.
const std::string kHardwareBody = "e605da79-8246-9201-b359-b533fafc9984";
const std::string kStoredBody = "0d279e0a-c3c2-393f-256c-e20d6ff74d62";
const std::string kOtherBody = "aaa6afe7-bb68-078b-d0c4-b70e6d9f4a72";

const std::map<char, Lines> kLines = {
    {'g', {"Hid is generated."}},
    {'r', {"Runtime device id: 2-0-" + kHardwareBody}},
    {'R', {"Generating random runtime hid: ", "Runtime device id: 2-0-"}},
    {'y', {"Settings' last write date is less than 10 days ago. Returning file device id."}},
    {'o', {"Settings' last write date is more than 10 days ago."}},
    {'k', {"Skipping date check."}},
    {'t', {"Settings' hid type is random."}},
    {'x', {"Device id is not the same as file device id."}},
    {'f', {"Return file device id."}},
    {'s', {"Device id is the same as file device id and set hid type is generated."}},
    {'m', {"There are more than 50% match, returning file device id."}},
    {'n', {"There are less or equal to 50% match, returning runtime device id."}},
    {'w', {"Saving hardware settings. No settings file.", "Saving hardware settings"}},
};

std::string Count(int matches, int stored, int runtime) {
  return "There is match of " + std::to_string(matches) +
         " hardware ids out of stored hw ids number of " + std::to_string(stored) +
         " and runtime hw ids number of " + std::to_string(runtime);
}

struct Story {
  std::string name, file, record, flags, machine, id, record_after, lines;
  std::size_t reads = 0;

  bool Has(const char* what) const { return file.find(what) != std::string::npos; }
};

std::string Body(const std::string& letter, const std::string& random) {
  if (letter == "S") return kStoredBody;
  if (letter == "H") return kHardwareBody;
  return letter == "O" ? kOtherBody : random;
}

// The bytes of a record in the notation of the stories.
std::string Bytes(std::string text, const std::string& random, std::int64_t present) {
  if (text == "-") return "<missing>";
  std::replace(text.begin(), text.end(), ',', ' ');
  std::istringstream words(text);
  StoredRecord record;
  std::int64_t age = 0;
  int same = 0;
  std::string body;
  words >> age >> same >> record.hid_type >> body >> record.version;
  record.date = present - age;
  record.device_id = "2-0-" + Body(body, random);
  if (record.version.empty()) record.version = "2.0";
  record.ids = {"1234abcd", "pf0xyz", "board7", "00:1a:2b:c3:d4:0f"};
  for (std::size_t i = 0; i + static_cast<std::size_t>(same) < 4; ++i) record.ids[i] = "other";
  if (same == 0) record.ids.clear();
  return record.Bytes();
}

// All lines of a successful call but those of the hardware readers.
Lines ExpectedLines(const Story& story) {
  const std::string missing = "[Error] Can not open file to read";
  const std::string none = "[Info] Can not load HID from common and user directory";
  const std::string loaded = "[Info] HID was loaded from common file: ";
  Lines lines = {"[Debug] Execute GetHardwareIdEmulated, version 2.0",
                 "[Info] Trying to get device.idv2."};
  const auto add = [&lines](const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
  };
  if (story.file == "v2") {
    add({loaded + "1-6-" + kStoredBody, "[Info] device.idv2 is correct."});
  } else {
    if (story.Has("bad")) add({loaded + "1-6-no id"});
    if (!story.Has("bad")) add({story.Has("v1") ? "[Error] " : missing, missing, none});
    add({"[Info] Device id version 2.0 is incorrect.",
         "[Info] device.idv2 not found or not correct. Trying to get device.id"});
    if (story.Has("v1")) {
      add({loaded + "1-6-" + kStoredBody, "[Info] device.id is correct. Saving into device.idv2"});
    } else {
      add({missing, missing, none, "[Info] Device id version 1.6 is incorrect.",
           "[Info] device.id is not found or not correct."});
    }
  }
  add({story.record == "-" ? "[Info] Hardware settings are not read."
                           : "[Info] Hardware settings are successfully read."});
  const std::string age = story.record.substr(0, story.record.find(','));
  const int same = story.record == "-" ? 0 : story.record[age.size() + 1] - '0';
  for (const char letter : story.lines) {
    if (letter == 'd') add({"[Info] Diff seconds: " + age});
    const bool lost = story.machine == "lost";
    if (letter == 'c') {
      add({"[Info] Comparing runtime hardware ids.",
           "[Info] " + Count(lost ? 0 : same, 4, lost ? 0 : 4)});
    }
    if (kLines.contains(letter)) {
      for (const std::string& line : kLines.at(letter)) add({"[Info] " + line});
    }
  }
  return lines;
}

// The same of a reply; what is random is left out of a line.
Lines DecisionLines(const Reply& reply, bool random) {
  Lines lines;
  for (std::string line : reply.Lines()) {
    if (!lines.empty() && (line.starts_with("[Debug]") || line.find("COM") != std::string::npos ||
                           line.find("Wmi") != std::string::npos)) {
      continue;
    }
    for (const std::string& start : kLines.at('R')) {
      if (random && line.starts_with("[Info] " + start)) line = "[Info] " + start;
    }
    lines.push_back(line);
  }
  return lines;
}

void Prepare(ScriptedMachine& machine, const Story& story, std::int64_t present) {
  if (story.file == "v2") WriteFileText(machine.Common("device.idv2"), "1-6-" + kStoredBody);
  if (story.Has("bad")) WriteFileText(machine.Common("device.idv2"), "1-6-no id");
  if (story.Has("v1")) WriteFileText(machine.Common("device.id"), "1-6-" + kStoredBody);
  if (story.record != "-") {
    WriteFileText(machine.Common("hid_settings"), Bytes(story.record, "", present));
  }
  if (story.machine == "lost") machine.LoseHardware();
  const std::size_t last = story.machine == "nocom" ? 0 : 1;
  if (story.machine == "ok" || story.machine == "lost") return;
  machine.on_call = [&machine, last](PlatformCall call, std::string_view) {
    const bool fails = call == PlatformCall::kCoInitializeEx && machine.Seen(call).size() > last;
    return fails ? std::optional<std::uint32_t>(0x80010106) : std::nullopt;
  };
}

void Play(const Story& story) {
  ScriptedMachine machine;
  const std::int64_t present = machine.ticks / 10'000'000;
  Prepare(machine, story, present);
  const Reply reply = GetIdMod("2.0", static_cast<std::uint32_t>(std::stoul(story.flags)));
  SCOPED_TRACE(testing::PrintToString(reply));

  const bool has_id = story.id != "-";
  const std::string body = has_id && reply.id.size() == 40 ? reply.id.substr(4) : "";
  const std::string record = Bytes(story.record_after, body, present);
  EXPECT_EQ(machine.Seen(PlatformCall::kCoInitializeEx).size(), story.reads);
  EXPECT_EQ(ReadFileText(machine.Common("hid_settings")), record);
  EXPECT_EQ(ReadFileText(machine.User("hid_settings")), "<missing>");
  EXPECT_EQ(ReadFileText(machine.User("device.idv2")), "<missing>");
  if (!has_id) {
    EXPECT_EQ(reply.result, 4);
    EXPECT_EQ(reply.id + reply.log, "<untouched><untouched>");
    const char* text = story.Has("bad") ? "1-6-no id" : "";
    EXPECT_EQ(ReadFileText(machine.Common("device.idv2")),
              story.file == "v2" ? "1-6-" + kStoredBody : text);
    return;
  }
  EXPECT_EQ(reply.result, 0);
  EXPECT_TRUE(IsValidDeviceId(reply.id));
  EXPECT_EQ(reply.id, "2-0-" + Body(story.id, body));
  EXPECT_EQ(story.id == "?", body != kStoredBody && body != kHardwareBody);
  EXPECT_EQ(ReadFileText(machine.Common("device.idv2")), "1-6-" + body);
  EXPECT_EQ(DecisionLines(reply, story.lines.starts_with('R')), ExpectedLines(story));
}

TEST(ResolutionTest, EveryOutcome) {
  std::ifstream table(DEVICEID_STORIES);
  for (std::string comment; table.peek() == '#';) std::getline(table, comment);
  Story story;
  while (table >> story.name >> story.file >> story.record >> story.flags >> story.machine >>
         story.id >> story.record_after >> story.lines >> story.reads) {
    SCOPED_TRACE(story.name);
    Play(story);
  }
  EXPECT_EQ(story.name, "older-and-bad");
}

class LifeTest : public MachineTest {
 protected:
  void Days(std::int64_t days) { pc.ticks += days * 86400 * 10'000'000; }
  static Reply Call() {
    Reply reply = GetId("2.0");
    EXPECT_EQ(reply.result, 0) << reply;
    return reply;
  }
  void ReplaceBoard() { pc.Set(L"Win32_BaseBoard", L"SerialNumber", L"BOARD8"); }
  void ReplaceDisk() {
    pc.Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", L"DEADBEEF");
  }
};

TEST_F(LifeTest, ChangesAddUpAgainstTheListStoredWithTheId) {
  const std::string id = Call().id;
  EXPECT_EQ(id, "2-0-" + kHardwareBody);
  Days(30);
  ReplaceDisk();
  EXPECT_EQ(Call().id, id);
  Days(30);
  EXPECT_EQ(Call().id, id);
  ReplaceBoard();
  // The date is kept in whole seconds; the age is not.
  Days(10);
  pc.ticks -= 1;
  EXPECT_EQ(Call().id, id);
  pc.ticks += 1;
  const Reply reply = Call();
  EXPECT_EQ(reply.id, "2-0-" + kStoredBody) << reply;
  EXPECT_THAT(reply.log, HasSubstr(Count(2, 4, 4)));
  Days(30);
  EXPECT_EQ(Call().id, reply.id);
}

TEST_F(LifeTest, RandomIdStaysAfterTheHardwareIsBack) {
  const auto hardware = pc.wmi;
  pc.LoseHardware();
  const std::string id = Call().id;
  Days(11);
  EXPECT_EQ(Call().id, id);
  pc.wmi = hardware;
  EXPECT_EQ(Recheck("2.0").id, id);
}

TEST_F(LifeTest, UpgradesFromOlderFormatsAndFolders) {
  const std::string older = GetId("1.6").id;
  EXPECT_EQ(Call().id, "2-0-" + older.substr(4));
  EXPECT_EQ(ReadFileText(pc.Common("device.id")), older);
  for (const bool common : {true, false}) {
    ScriptedMachine machine;
    const std::string id = "1-6-" + kStoredBody;
    WriteFileText(common ? machine.OldCommon("device.id") : machine.OldUser("device.id"), id);
    machine.LoseHardware();
    EXPECT_EQ(Call().id, "2-0-" + kStoredBody);
    // What lay in the user folder moves to the common one.
    EXPECT_EQ(ReadFileText(machine.Common("device.id")), id);
    EXPECT_EQ(ReadFileText(machine.User("device.id")), "<missing>");
  }
}

TEST_F(LifeTest, CommonFolderThatCannotBeWrittenForAWhile) {
  const std::string obstacle = *pc.common_root + "/BrindleQuayWorks";
  WriteFileText(obstacle, "a file in the folder's place");
  const std::string id = Call().id;
  EXPECT_EQ(ReadFileText(pc.User("device.idv2")), "1-6-" + kHardwareBody);
  const std::string record = ReadFileText(pc.User("hid_settings"));
  std::remove(obstacle.c_str());
  EXPECT_EQ(Call().id, id);
  EXPECT_EQ(ReadFileText(pc.Common("device.idv2")), "1-6-" + kHardwareBody);
  EXPECT_EQ(ReadFileText(pc.User("device.idv2")), "<missing>");
  Days(10);
  EXPECT_EQ(Call().id, id);
  EXPECT_EQ(ReadFileText(pc.Common("hid_settings")).size(), record.size());
  EXPECT_EQ(ReadFileText(pc.User("hid_settings")), record);
}

TEST_F(LifeTest, AnIdThatCannotBeStoredOrDoesNotFitIsGivenAllTheSame) {
  char id[40] = "";
  EXPECT_EQ(GetHardwareId(id, sizeof(id), "2.0", nullptr, 0), 1);
  EXPECT_EQ(id, ("2-0-" + kHardwareBody).substr(0, 39));
  EXPECT_EQ(ReadFileText(pc.Common("device.idv2")), "1-6-" + kHardwareBody);
  EXPECT_EQ(ReadFileText(pc.Common("hid_settings")).substr(11, 40), "2-0-" + kHardwareBody);
  ScriptedMachine machine;
  machine.Fail(PlatformCall::kCreateFile, 5);
  machine.Fail(PlatformCall::kCreateDirectory, 5);
  EXPECT_EQ(Call().id, "2-0-" + kHardwareBody);
}

TEST_F(LifeTest, EmulatedPartsArePlayedThrough) {
  const auto ask = [this](const char* parts) {
    WriteFileText(pc.Common("hardware_ids.emulated"), parts);
    return GetIdMod("2.0", DEVICEID_SKIP_DATE_CHECK | DEVICEID_USE_EMULATED_HARDWARE_IDS);
  };
  const std::string id = ask("disk\nproduct\nboard\nmac").id;
  ReplaceDisk();  // The id itself is still made of the real parts.
  EXPECT_EQ(ask("new disk\nproduct\nboard\nmac").id, id);
  const Reply reply = ask("new disk\nproduct\nnew board\nmac");
  EXPECT_EQ(reply.id, "2-0-" + kOtherBody);
  EXPECT_THAT(reply.log, HasSubstr(Count(2, 4, 4)));
}

TEST_F(LifeTest, RecheckTellsItsNameAndIgnoresTheDate) {
  Call();
  const Reply reply = Recheck("2.0");
  EXPECT_THAT(reply.log, HasSubstr("Execute RecheckHardwareId, version 2.0"));
  EXPECT_THAT(reply.log, HasSubstr("Skipping date check."));
  EXPECT_THAT(reply.log, HasSubstr(Count(4, 4, 4)));
}

}  // namespace
}  // namespace system_info
