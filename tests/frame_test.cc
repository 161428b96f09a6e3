// What stands around every request: the checks of its arguments, its log, and how it fails.

#include <filesystem>
#include <set>

#include "identity/device_id.h"
#include "support/failing_allocation.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::PrintToString;
using testing::StartsWith;

const std::map<std::string, std::function<Reply(const char*)>> kExports = {
    {"GetHardwareId", GetId},
    {"RecheckHardwareId", Recheck},
    {"GetHardwareIdEmulated", [](const char* version) { return GetIdMod(version, 0); }}};
const std::string kTime = "[03:43:20:000] ";

std::string NoId(int result, const std::string& log = "<untouched>") {
  return "result " + std::to_string(result) + ", id <untouched>, log:\n" + log;
}

// What a buffer full of '#' holds once `text` was copied into its first `size` bytes.
std::string Cut(const std::string& text, std::size_t size) {
  const std::string copied = size == 0 ? "" : text.substr(0, size - 1) + '\0';
  return std::string(text.size() + 9, '#').replace(0, copied.size(), copied);
}

class Frame : public MachineTest {};

TEST_F(Frame, RefusesBadArgumentsInOneOrder) {
  WriteFileText(pc.OldCommon("device.id"), "");
  for (const auto& [name, call] : kExports) {
    EXPECT_EQ(PrintToString(call(nullptr)), NoId(7));
    EXPECT_EQ(PrintToString(call("")), NoId(7));
    for (const char* version : {"1.3", "1.7", "1.", "2", "2.0 ", "2.00", "2.0.0", " 1.6", "-1.0"}) {
      EXPECT_EQ(PrintToString(call(version)), NoId(6)) << version;
    }
    if (name == "GetHardwareId") continue;
    const std::string why = name + " is not supported with version 1.6\n";
    EXPECT_EQ(PrintToString(call("1.6")), NoId(8, kTime + "[Info]  " + why));
  }
  EXPECT_FALSE(std::filesystem::exists(pc.Common("")));
  EXPECT_TRUE(pc.Seen(PlatformCall::kCreateFile).empty());
  EXPECT_EQ(GetHardwareId(nullptr, 64, nullptr, nullptr, 5), 5);
  EXPECT_EQ(RecheckHardwareId(nullptr, 64, nullptr, nullptr, 5), 5);
  EXPECT_EQ(GetHardwareIdMod(nullptr, 64, nullptr, nullptr, 5, 0), 5);
}

TEST_F(Frame, TakesAFormatAsANumber) {
  EXPECT_STREQ(GetHIDVersion(), "2.0.0");
  WriteFileText(pc.OldUser("device.id"), "");  // Every format comes as far as its new folder.
  pc.At(PlatformCall::kCreateDirectory, "", [] { throw std::runtime_error("stop"); });
  const std::set<int> known = {10, 11, 12, 14, 15, 16, 20};
  for (int code = -1; code <= 22; ++code) {
    char log[4096] = "";
    EXPECT_EQ(GetHardwareIdEx(nullptr, 64, code, log, 4096), 5);
    EXPECT_EQ(GetHardwareIdEx(log, 0, code, log, 4096), known.contains(code) ? 3 : 7) << code;
    const std::string version = std::to_string(code / 10) + '.' + std::to_string(code % 10) + '\n';
    EXPECT_EQ(std::string(log).find("Id, version " + version) < 99, known.contains(code)) << log;
  }
}

TEST_F(Frame, TellsInTheLastLineWhatStoppedTheCall) {
  const std::string made = "1-6-" + GetId("1.5").id.substr(4);
  for (const bool standard : {true, false}) {
    pc.At(PlatformCall::kCreateDirectory, "", [=] {
      if (standard) throw std::runtime_error("two\nlines");
      throw 7;
    });
    const std::string result = standard ? "result 3, id " : "result 4, id ";
    EXPECT_THAT(PrintToString(GetId("1.6")), StartsWith(result + made)) << "lost as it was saved";
    WriteFileText(pc.OldUser("device.id"), "");
    for (const auto& [name, call] : kExports) {
      const Reply reply = call("2.0");
      const std::string why =
          standard ? "Error in " + name + ": two\nlines" : "Unexpected error in " + name;
      EXPECT_THAT(PrintToString(reply), StartsWith(result + "<untouched>"));
      EXPECT_THAT(reply.log, StartsWith(kTime + "[Debug] Execute " + name + ", version 2.0\n"));
      EXPECT_THAT(reply.log, testing::EndsWith('\n' + kTime + "[Error] " + why + '\n'));
    }
    std::filesystem::remove_all(pc.OldUser(""));
  }
}

TEST_F(Frame, CutsWhatDoesNotFitAndStoresTheIdAllTheSame) {
  const Reply full = GetId("1.6");
  const auto length = static_cast<std::uint32_t>(full.log.size());
  const std::map<std::uint32_t, std::uint32_t> sizes = {
      {0, length}, {1, 1}, {40, 0}, {41, length + 1}};
  for (const auto& [id_size, log_size] : sizes) {
    std::filesystem::remove_all(pc.Common(""));
    std::string id = Cut(full.id, 0);
    std::string log = Cut(full.log, 0);
    EXPECT_EQ(GetHardwareIdEx(id.data(), id_size, 16, log.data(), log_size), id_size < 41);
    EXPECT_EQ(ReadFileText(pc.Common("device.id")), full.id);
    EXPECT_EQ(id, Cut(full.id, id_size));
    EXPECT_EQ(log, Cut(full.log, log_size));
    const auto looks_at_clock = pc.Seen(PlatformCall::kLocalTime);
    EXPECT_EQ(GetHardwareIdEx(log.data(), id_size, 16, nullptr, 99), id_size < 41);
    EXPECT_EQ(pc.Seen(PlatformCall::kLocalTime), looks_at_clock);
  }
}

TEST_F(Frame, LogsLocalTimeLevelAndMessage) {
  pc.ticks = ((19'675 * 24LL + 3) * 3600 + 35 * 60 + 3) * 10'000'000 + 79'999;
  WriteFileText(pc.Common("device.id"), "");
  WriteFileText(pc.User("device.id"), "1");
  pc.At(PlatformCall::kDeleteFile, "", [] { throw std::runtime_error("two\nlines"); });
  for (const std::string time : {"[09:05:03:007] ", "[00:00:00:007] "}) {
    const std::string entries[] = {"[Debug] Execute GetHardwareId, version 1.6\n", "[Error] \n",
                                   "[Info]  HID was loaded from user file: 1\n",
                                   "[Error] Error in GetHardwareId: two\nlines\n"};
    EXPECT_EQ(GetId("1.6").log,
              time + entries[0] + time + entries[1] + time + entries[2] + time + entries[3]);
    pc.Fail(PlatformCall::kLocalTime, 22);
  }
}

TEST_F(Frame, SurvivesRunningOutOfMemoryAnywhere) {
  WriteFileText(pc.OldCommon("device.id"), "bad");
  // Short values need no memory: a variant whose copy fails is a false alarm for the sanitizer.
  for (auto& [class_text, rows] : pc.wmi) rows = {{{rows[0].begin()->first, L"7"}}};
  for (const auto& [call, good] :
       {std::pair(&GetHardwareId, 0), std::pair(&RecheckHardwareId, 8)}) {
    bool failed = true;
    for (int turn = 2; failed; ++turn) {
      std::filesystem::remove_all(pc.Common(""));
      char id[64] = "";
      char log[1 << 14] = "<untouched>";
      int result = -1;
      {
        const FailingNew memory(turn / 2, turn % 2 == 0);
        result = call(id, 64, "1.6", log, sizeof(log));
        failed = memory.failed();
      }
      SCOPED_TRACE(testing::Message() << turn << ": result " << result << ", id " << id);
      EXPECT_THAT(result, testing::AnyOf(good, 3));
      EXPECT_TRUE(*id != '\0' ? IsValidDeviceId(id) && good == 0 : result != 0);
      // Only what fails before there is a log, as the first allocation does, leaves no log.
      EXPECT_TRUE(*log == '<' ? result == 3 && *id == '\0'
                              : turn > 3 && (good == 0 || result == 8));
      EXPECT_TRUE(CountLiveObjects() == LiveObjects{});
    }
  }
}

}  // namespace
}  // namespace system_info
