// What stands around every request: the checks of its arguments, its log, and how it fails.

#include <filesystem>
#include <regex>

#include "support/failing_allocation.h"
#include "support/scripted_machine.h"
#include "values/device_id.h"

namespace system_info {
namespace {

using enum PlatformCall;
using testing::PrintToString;

const std::map<std::string, std::function<Reply(const char*)>> kExports = {
    {"GetHardwareId", GetId},
    {"RecheckHardwareId", Recheck},
    {"GetHardwareIdEmulated", [](const char* version) { return GetIdMod(version, 0); }}};
const std::string kNoId = ", id <untouched>, log:\n";

class Frame : public MachineTest {};

TEST_F(Frame, AsksForABufferFirst) {
  EXPECT_EQ(GetHardwareIdEx(nullptr, 64, 13, nullptr, 5), 5);
  EXPECT_EQ(RecheckHardwareId(nullptr, 64, nullptr, nullptr, 5), 5);
  EXPECT_EQ(GetHardwareIdMod(nullptr, 64, nullptr, nullptr, 5, 0), 5);
  char id = 0;
  EXPECT_EQ(GetHardwareId(&id, 1, nullptr, nullptr, 5), 7);
}

TEST_F(Frame, TellsInTheLastLineWhatStoppedTheCall) {
  constexpr std::int64_t kUtc = 19'675 * 86'400LL + 3 * 3600 + 35 * 60 + 3;  // 03:35:03
  constexpr std::int64_t kAlmostEightMilliseconds = 79'999;
  pc.ticks = kUtc * kTicksPerSecond + kAlmostEightMilliseconds;
  WriteFileText(pc.Common("device.idv2"), "");
  WriteFileText(pc.User("device.idv2"), "1");
  for (const bool standard : {true, false}) {
    pc.At(kDeleteFile, "", [=] { standard ? throw std::runtime_error("two\nlines") : throw 7; });
    if (!standard) pc.Fail(kLocalTime, 22);
    const std::string time = standard ? "[09:05:03:007] " : "[00:00:00:007] ";
    const std::string result = standard ? "result 3" : "result 4";
    for (const auto& [name, call] : kExports) {
      std::string log = time + "[Debug] Execute " + name + ", version 2.0\n";
      log += time + "[Info]  Trying to get device.idv2.\n";
      log += time + "[Error] \n";
      log += time + "[Info]  HID was loaded from user file: 1\n";
      log += time + (standard ? "[Error] Error in " + name + ": two\nlines\n"
                              : "[Error] Unexpected error in " + name + '\n');
      EXPECT_EQ(PrintToString(call("2.0")), result + kNoId + log);
    }
    // An id that is lost as it is saved has been given before.
    EXPECT_THAT(PrintToString(GetId("1.6")), testing::StartsWith(result + ", id 1-6-e605da79-"));
  }
}

// What a buffer full of '#' holds once `text` was copied into its first `size` bytes.
std::string Cut(const std::string& text, std::size_t size) {
  const std::string copied = size == 0 ? "" : text.substr(0, size - 1) + '\0';
  return std::string(text.size() + 9, '#').replace(0, copied.size(), copied);
}

TEST_F(Frame, CutsWhatDoesNotFitAndStoresTheIdAllTheSame) {
  const Reply full = GetId("1.6");
  const auto length = static_cast<std::uint32_t>(full.log.size());
  for (const auto& [id_size, log_size] :
       {std::pair(0u, length), {1u, 1u}, {40u, 0u}, {41u, length + 1}}) {
    std::filesystem::remove_all(pc.Common(""));
    std::string id = Cut(full.id, 0), log = Cut(full.log, 0);
    EXPECT_EQ(GetHardwareIdEx(id.data(), id_size, 16, log.data(), log_size), id_size < 41);
    EXPECT_EQ(ReadFileText(pc.Common("device.id")), full.id);
    EXPECT_EQ(id, Cut(full.id, id_size));
    EXPECT_EQ(log, Cut(full.log, log_size));
    const auto looks_at_clock = pc.Seen(kLocalTime);
    EXPECT_EQ(GetHardwareIdEx(id.data(), id_size, 16, nullptr, 99), id_size < 41);
    EXPECT_EQ(pc.Seen(kLocalTime), looks_at_clock);
  }
}

TEST_F(Frame, SurvivesRunningOutOfMemoryAnywhere) {
  WriteFileText(pc.OldCommon("device.id"), "bad");
  // Short values need no memory: a variant whose copy fails is a false alarm for the sanitizer.
  for (auto& [class_text, rows] : pc.wmi) rows = {{{rows[0].begin()->first, L"7"}}};
  bool failed = true;
  for (int turn = 2; failed; ++turn) {
    std::filesystem::remove_all(pc.Common(""));
    char id[64] = "", log[1 << 14] = "<untouched>";
    std::optional<FailingNew> memory(std::in_place, turn / 2, turn % 2 == 0);
    const int result = GetHardwareId(id, 64, "1.6", log, sizeof(log));
    failed = memory->failed();
    memory.reset();
    EXPECT_THAT(result, testing::AnyOf(0, 3)) << turn;
    EXPECT_TRUE(*id == '\0' ? result == 3 : IsValidDeviceId(id)) << turn;
    EXPECT_TRUE(*log != '<' || *id == '\0') << turn;
    // A line is appended whole or not at all.
    EXPECT_FALSE(std::regex_search(log, std::regex("\\] +\\[[0-9]"))) << turn;
  }
}

}  // namespace
}  // namespace system_info
