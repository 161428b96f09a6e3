// Records that are short, long or odd, and the comparison of two lists.

#include "storage/hid_settings.h"

#include <filesystem>

#include "identity/hardware_id_matching.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

using Ids = std::vector<std::string>;

const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";

class SettingsTest : public MachineTest {
 protected:
  const std::string file = pc.Common("hid_settings"), user_file = pc.User("hid_settings");
};

TEST_F(SettingsTest, WhatIsTooLongIsNotStored) {
  for (const std::size_t count : {256u, 257u}) {
    const StoredRecord record = {"2.0", kId, 0, 0, Ids(count, "id")};
    WriteFileText(file, record.Bytes());
    EXPECT_EQ(LoadHidSettings().has_value(), count == 256);
    EXPECT_EQ(SaveHidSettings(HidSettings({}, {}, kId, record.ids)), count == 256);
    EXPECT_EQ(ReadFileText(file) == "<missing>", count == 257);
  }
}

TEST_F(SettingsTest, WhatTheDiskDoesNotTakeGoesToTheOtherFolder) {
  pc.Fail(PlatformCall::kWriteStream, 1);
  pc.At(PlatformCall::kWriteStream, "", [&] {
    if (pc.Seen(PlatformCall::kWriteStream).size() > 1) pc.Recover();
  });
  EXPECT_TRUE(SaveHidSettings(HidSettings({}, {}, kId, Ids(256, std::string(100, 'x')))));
  EXPECT_EQ(ReadFileText(file), "");
  EXPECT_EQ(ReadFileText(user_file).size(), 82u - 15 + 256 * 104);
}

TEST_F(SettingsTest, OddFieldsEndTheCallOrAreTakenAsTheyAre) {
  WriteFileText(pc.Common("device.idv2"), "1-6-" + kId.substr(4));
  const std::tuple<std::string, int, const char*> cases[] = {
      {StoredRecord::Number(0x7fffffff, 4), 3, "Error in GetHardwareId: "},
      // 17000000000000000 less the date times 10000000, modulo 2^64.
      {StoredRecord{"2.0", kId, 1, INT64_MAX, {}}.Bytes(), 0, "Diff seconds: 1700000001\n"},
      {StoredRecord{"2.0", kId, 1, INT64_MIN, {}}.Bytes(), 0, "Diff seconds: 1700000000\n"},
  };
  for (const auto& [bytes, result, line] : cases) {
    WriteFileText(file, bytes);
    const Reply reply = GetId("2.0");
    EXPECT_EQ(reply.result, result);
    EXPECT_THAT(reply.log, testing::HasSubstr(line));
    EXPECT_EQ(ReadFileText(file) == bytes, result == 3) << line;
  }
}

TEST(MatchingTest, ThresholdsDecideAtThePositionsOfTheShorterList) {
  const std::size_t fewest_equal[] = {1, 1, 2, 3, 3, 3, 4, 5, 6, 7, 7, 7, 8, 8, 9, 10};
  for (std::size_t length = 0; length < std::size(fewest_equal); ++length) {
    for (std::size_t equal = 0; equal <= length; ++equal) {
      Ids one(length, "same"), other(length + 1, "Same");
      std::fill_n(other.begin(), equal, "same");
      int matches = -1;
      EXPECT_EQ(MatchHardwareIds(one, other, matches), equal >= fewest_equal[length]) << length;
      EXPECT_EQ(MatchHardwareIds(other, one, matches), equal >= fewest_equal[length]) << length;
      EXPECT_EQ(matches, static_cast<int>(equal));
    }
  }
}

}  // namespace
}  // namespace system_info
