// Format 2.0: what each outcome returns, leaves behind and says, and the lives of machines.

#include <filesystem>
#include <fstream>
#include <sstream>

#include "identity/device_id.h"
#include "support/failing_allocation.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

using testing::HasSubstr;

// By md5sum, the body of the id that the scripted machine's hardware gives with both disk and board
// replaced, as it is, and with the disk replaced.
std::map<std::string, std::string> bodies = {{"S", "0d279e0a-c3c2-393f-256c-e20d6ff74d62"},
                                             {"H", "e605da79-8246-9201-b359-b533fafc9984"},
                                             {"O", "aaa6afe7-bb68-078b-d0c4-b70e6d9f4a72"}};
const std::string kStored = "1-6-" + bodies["S"];

struct Story {
  std::string name, file, record, flags, machine, id, record_after, letters;
  std::size_t reads = 0;
  std::vector<std::string> lines;
};

// The stories, whose file explains its columns.
std::vector<Story> ReadStories() {
  std::vector<Story> stories;
  std::map<char, std::string> legend;
  std::ifstream file(DEVICEID_STORIES);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("= ")) legend[line[2]] = line.substr(4);
    Story story;
    std::istringstream words(line);
    words >> story.name >> story.file >> story.record >> story.flags >> story.machine >> story.id;
    words >> story.record_after >> story.letters >> story.reads;
    if (words && line[0] != '#' && line[0] != '=') stories.push_back(story);
  }
  for (Story& story : stories) {
    for (const char letter : story.letters) {
      std::string line = legend[letter];
      const std::size_t age = line.find("AGE");
      if (age != std::string::npos) line.replace(age, 3, story.record, 0, story.record.find(','));
      story.lines.push_back(line);
    }
  }
  return stories;
}

// The bytes of a record in the notation of the stories.
std::string Bytes(std::string text, std::int64_t present) {
  if (text == "-") return "<missing>";
  std::replace(text.begin(), text.end(), ',', ' ');
  std::istringstream words(text);
  StoredRecord record;
  std::size_t same = 0;
  std::string body, version;
  words >> record.date >> same >> record.hid_type >> body;
  if (words >> version) record.version = version;
  record.date = present - record.date;
  record.device_id = "2-0-" + bodies[body];
  record.ids = {"1234abcd", "pf0xyz", "board7", "00:1a:2b:c3:d4:0f"};
  std::fill(record.ids.begin(), record.ids.end() - static_cast<int>(same), "other");
  if (same == 0) record.ids.clear();
  return record.Bytes();
}

void Prepare(ScriptedMachine& machine, const Story& story, std::int64_t present) {
  const auto has = [&](const char* part) { return story.file.find(part) != std::string::npos; };
  if (has("v2")) WriteFileText(machine.Common("device.idv2"), kStored);
  if (has("bad")) WriteFileText(machine.Common("device.idv2"), "1-6-no id");
  if (has("v1")) WriteFileText(machine.Common("device.id"), kStored);
  if (story.record != "-") {
    WriteFileText(machine.Common("hid_settings"), Bytes(story.record, present));
  }
  if (story.machine == "lost") machine.LoseHardware();
  if (!story.machine.starts_with("no")) return;
  const std::size_t last = story.machine == "nolist" ? 1 : 0;
  machine.At(PlatformCall::kCoInitializeEx, "", [&machine, last] {
    const bool fails = machine.Seen(PlatformCall::kCoInitializeEx).size() > last;
    if (fails) machine.Fail(PlatformCall::kCoInitializeEx, 0x80010106);
  });
}

// The lines without those of the hardware readers, and as `expected` has them where that has a
// star.
std::vector<std::string> Decisions(const Reply& reply, const std::vector<std::string>& expected) {
  std::vector<std::string> lines;
  for (std::string line : reply.Lines()) {
    const bool reader = line.starts_with("[Debug]") || line.find("COM") != std::string::npos ||
                        line.find("Wmi") != std::string::npos;
    if (reader && !lines.empty()) continue;
    const std::string wanted = lines.size() < expected.size() ? expected[lines.size()] : "";
    if (wanted.ends_with('*') && line.starts_with(wanted.substr(0, wanted.size() - 1))) {
      line = wanted;
    }
    lines.push_back(line);
  }
  return lines;
}

// Shows the story to those who play it elsewhere: its files before and after, its call and its log.
void Export(const Story& story, const ScriptedMachine& machine, const char* when,
            const Reply& reply) {
  const char* target = std::getenv("DEVICEID_STORIES_OUT");
  if (target == nullptr || story.machine != "ok" || story.id == "?") return;
  const std::string folder = target + ("/" + story.name);
  std::filesystem::create_directories(folder + "/" + when);
  std::filesystem::copy(*machine.common_root, folder + "/" + when + "/ProgramData",
                        std::filesystem::copy_options::recursive);
  WriteFileText(folder + "/flags", story.flags);
  WriteFileText(folder + "/id", reply.result == 0 ? reply.id : "");
  WriteFileText(folder + "/log", reply.result == 0 ? reply.log : "");
}

void Play(const Story& story) {
  ScriptedMachine machine;
  const std::int64_t present = std::time(nullptr);
  machine.ticks = present * 10'000'000;
  Prepare(machine, story, present);
  Export(story, machine, "before", {});
  const Reply reply = GetIdMod("2.0", static_cast<std::uint32_t>(std::stoul(story.flags)));
  Export(story, machine, "after", reply);
  SCOPED_TRACE(testing::PrintToString(reply));

  EXPECT_EQ(machine.Seen(PlatformCall::kCoInitializeEx).size(), story.reads);
  EXPECT_FALSE(std::filesystem::exists(machine.User("")));
  if (story.id == "-") {
    EXPECT_EQ(reply.result, 4);
    EXPECT_EQ(reply.id + reply.log, "<untouched><untouched>");
    EXPECT_EQ(ReadFileText(machine.Common("device.idv2")), story.file == "v2"    ? kStored
                                                           : story.file == "bad" ? "1-6-no id"
                                                                                 : "");
  } else {
    EXPECT_EQ(reply.result, 0);
    ASSERT_TRUE(IsValidDeviceId(reply.id));
    bodies["?"] = reply.id.substr(4);
    EXPECT_EQ(reply.id, "2-0-" + bodies[story.id]);
    EXPECT_EQ(story.id == "?", bodies["?"] != bodies["S"] && bodies["?"] != bodies["H"]);
    EXPECT_EQ(ReadFileText(machine.Common("device.idv2")), "1-6-" + bodies["?"]);
    EXPECT_EQ(Decisions(reply, story.lines), story.lines);
  }
  EXPECT_EQ(ReadFileText(machine.Common("hid_settings")), Bytes(story.record_after, present));
}

TEST(ResolutionTest, EveryOutcome) {
  const std::vector<Story> stories = ReadStories();
  EXPECT_EQ(stories.size(), 27u);
  for (const Story& story : stories) {
    SCOPED_TRACE(story.name);
    Play(story);
  }
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
  EXPECT_EQ(id, "2-0-" + bodies["H"]);
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
  EXPECT_EQ(reply.id, "2-0-" + bodies["S"]) << reply;
  EXPECT_THAT(reply.log, HasSubstr("match of 2 hardware ids out of stored hw ids number of 4"));
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
  const Reply reply = Recheck("2.0");
  EXPECT_EQ(reply.id, id);
  EXPECT_THAT(reply.log, HasSubstr("Skipping date check."));
}

TEST_F(LifeTest, UpgradesFromOlderFormatsAndFolders) {
  const std::string older = GetId("1.6").id;
  EXPECT_EQ(Call().id, "2-0-" + older.substr(4));
  EXPECT_EQ(ReadFileText(pc.Common("device.id")), older);
  for (const bool common : {true, false}) {
    ScriptedMachine machine;
    const std::string id = kStored;
    WriteFileText(common ? machine.OldCommon("device.id") : machine.OldUser("device.id"), id);
    machine.LoseHardware();
    EXPECT_EQ(Call().id, "2-0-" + bodies["S"]);
    // What lay in the user folder moves to the common one.
    EXPECT_EQ(ReadFileText(machine.Common("device.id")), id);
    EXPECT_EQ(ReadFileText(machine.User("device.id")), "<missing>");
  }
}

TEST_F(LifeTest, CommonFolderThatCannotBeWrittenForAWhile) {
  const std::string obstacle = *pc.common_root + "/BrindleQuayWorks";
  WriteFileText(obstacle, "a file in the folder's place");
  const std::string id = Call().id;
  EXPECT_EQ(ReadFileText(pc.User("device.idv2")), "1-6-" + bodies["H"]);
  const std::string record = ReadFileText(pc.User("hid_settings"));
  std::remove(obstacle.c_str());
  EXPECT_EQ(Call().id, id);
  EXPECT_EQ(ReadFileText(pc.Common("device.idv2")), "1-6-" + bodies["H"]);
  EXPECT_EQ(ReadFileText(pc.User("device.idv2")), "<missing>");
  Days(10);
  EXPECT_EQ(Call().id, id);
  EXPECT_EQ(ReadFileText(pc.Common("hid_settings")).size(), record.size());
  EXPECT_EQ(ReadFileText(pc.User("hid_settings")), record);
}

TEST_F(LifeTest, AnIdThatCannotBeStoredIsGivenAllTheSame) {
  pc.Fail(PlatformCall::kCreateFile, 5);
  pc.Fail(PlatformCall::kCreateDirectory, 5);
  EXPECT_EQ(Call().id, "2-0-" + bodies["H"]);
}

TEST_F(LifeTest, RunningOutOfMemoryCostsNoStoredId) {
  // Short values need no memory: a variant whose copy fails is a false alarm for the sanitizer.
  for (auto& [class_text, rows] : pc.wmi) rows = {{{rows[0].begin()->first, L"7"}}};
  const std::string part = "a part with a long name";
  WriteFileText(pc.Common("hardware_ids.emulated"), part + "\n" + part + "\n" + part);
  WriteFileText(pc.Common("device.idv2"), kStored);
  StoredRecord record;
  record.device_id = "2-0-" + bodies["S"];
  record.ids = {part, part, part};
  WriteFileText(pc.Common("hid_settings"), record.Bytes());
  const auto ask = [](char* id, char* log) {
    return GetHardwareIdMod(id, 64, "2.0", log, 16384, DEVICEID_USE_EMULATED_HARDWARE_IDS);
  };
  bool failed = true;
  for (int nth = 0; failed || nth < 2; ++nth) {
    Days(10);
    char id[64] = "";
    char log[16384] = "";
    {
      const FailingNew memory(nth, false);
      ask(id, log);
      failed = memory.failed();
    }
    Days(10);
    EXPECT_EQ(ask(id, log), 0) << nth << log;
    EXPECT_EQ(id, "2-0-" + bodies["S"]) << nth << log;
  }
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
  EXPECT_EQ(reply.id, "2-0-" + bodies["O"]);
  EXPECT_THAT(reply.log, HasSubstr("match of 2 hardware ids out of stored hw ids number of 4"));
}

}  // namespace
}  // namespace system_info
