// The record file byte by byte, the emulated list, and the comparison of two lists.

#include "storage/hid_settings.h"

#include <limits>

#include "identity/hardware_id_matching.h"
#include "storage/emulated_hardware_ids.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

using Ids = std::vector<std::string>;

const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";

class SettingsTest : public MachineTest {
 protected:
  void Put(const std::string& bytes) { WriteFileText(file, bytes); }
  std::string Stored() const { return ReadFileText(file); }

  const std::string file = pc.Common("hid_settings");
  const std::string user_file = pc.User("hid_settings");
  const StoredRecord record = {"2.0", kId, 1, -2, {"ABC", "1234"}};
};

TEST_F(SettingsTest, FieldsStandWhereOtherReadersLookForThem) {
  ASSERT_EQ(record.Bytes().size(), 82u);
  Put(record.Bytes() + "garbage");
  auto settings = LoadHidSettings();
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->version, HidFormatVersion(2, 0));
  EXPECT_EQ(settings->device_id, kId);
  EXPECT_EQ(settings->hid_type, HidType::Random);
  EXPECT_EQ(settings->last_write_date, -2);
  EXPECT_EQ(settings->hardware_ids, (Ids{"ABC", "1234"}));
  EXPECT_EQ(Stored(), record.Bytes() + "garbage");

  // The date of a write is that of the moment, whatever the record says; other fields are kept.
  settings->version = HidFormatVersion(1, 6);
  settings->hid_type = static_cast<HidType>(-7);
  settings->hardware_ids = {"", "x"};
  ASSERT_TRUE(SaveHidSettings(*settings));
  EXPECT_EQ(Stored(), (StoredRecord{"1.6", kId, -7, pc.ticks / 10'000'000, {"", "x"}}.Bytes()));
  EXPECT_EQ(LoadHidSettings()->hardware_ids, Ids{"x"});
  EXPECT_EQ(HidSettings({}, {}, kId, {}).last_write_date, pc.ticks / 10'000'000);
}

TEST_F(SettingsTest, EveryShortFileIsRemovedAndTheOtherFolderCounts) {
  WriteFileText(user_file, record.Bytes());
  for (std::size_t length = 0; length < record.Bytes().size(); ++length) {
    Put(record.Bytes().substr(0, length));
    ASSERT_TRUE(LoadHidSettings()) << length;
    ASSERT_EQ(Stored(), "<missing>") << length;
  }
  Put(record.Bytes());
  WriteFileText(user_file, "short");
  EXPECT_TRUE(LoadHidSettings());
  EXPECT_EQ(ReadFileText(user_file), "short");
}

TEST_F(SettingsTest, AStreamThatWritesTheFileKeepsItFromRemoval) {
  Put("");
  std::FILE* writer = std::fopen(file.c_str(), "r+b");
  EXPECT_FALSE(LoadHidSettings());
  EXPECT_EQ(Stored(), "");
  std::fclose(writer);
}

TEST_F(SettingsTest, LimitOfTheList) {
  StoredRecord many = record;
  for (const std::size_t count : {256u, 257u}) {
    many.ids.assign(count, "id");
    Put(many.Bytes());
    EXPECT_EQ(LoadHidSettings().has_value(), count == 256) << count;
    EXPECT_EQ(Stored() == "<missing>", count == 257) << count;
    Put("kept");
    EXPECT_EQ(SaveHidSettings(HidSettings({}, {}, kId, many.ids)), count == 256);
    EXPECT_EQ(Stored() == "kept", count == 257) << count;
  }
  EXPECT_EQ(ReadFileText(user_file), "<missing>");
}

TEST_F(SettingsTest, WhatCannotBeReadThrowsAndStays) {
  StoredRecord odd = record;
  const auto with_version = [&odd](const char* version) {
    odd.version = version;
    return odd.Bytes();
  };
  const std::pair<std::string, const char*> cases[] = {
      {with_version("x.0"), "invalid stoi argument\n"},
      {with_version("99999999999.0"), "stoi argument out of range\n"},
      {StoredRecord::Number(0x7fffffff, 4), ""},
  };
  for (const auto& [bytes, text] : cases) {
    Put(bytes);
    const Reply reply = GetId("2.0");
    EXPECT_EQ(reply.result, 3);
    EXPECT_EQ(reply.id, "<untouched>");
    EXPECT_THAT(reply.log, testing::HasSubstr(std::string("Error in GetHardwareId: ") + text));
    EXPECT_EQ(Stored(), bytes);
  }
  Put(with_version("2"));
  EXPECT_EQ(LoadHidSettings()->version, HidFormatVersion(1, 0));
}

TEST_F(SettingsTest, DatesOutOfAllBoundsWrap) {
  using Limits = std::numeric_limits<std::int64_t>;
  WriteFileText(pc.Common("device.idv2"), "1-6-" + kId.substr(4));
  // 17000000000000000 less the date times 10000000, modulo 2^64.
  const std::pair<std::int64_t, const char*> cases[] = {
      {Limits::max(), "1700000001\n"}, {Limits::min(), "1700000000\n"}, {1LL << 39, "-548055813888\n"}};
  for (const auto& [date, diff] : cases) {
    StoredRecord far = record;
    far.date = date;
    Put(far.Bytes());
    const Reply reply = GetId("2.0");
    EXPECT_EQ(reply.result, 0);
    EXPECT_THAT(reply.log, testing::HasSubstr(std::string("Diff seconds: ") + diff));
  }
}

TEST_F(SettingsTest, EmulatedIdsAreTheLinesOfAWindowsTextFile) {
  const std::string list = pc.Common("hardware_ids.emulated");
  WriteFileText(pc.User("hardware_ids.emulated"), "a\n");
  EXPECT_FALSE(ReadEmulatedHardwareIds());
  const std::pair<const char*, Ids> cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a\nb\n", {"a", "b"}},
      {"a\r\n\r\nb\r\n", {"a", "", "b"}},
      {" a \r\r\nb\r", {" a \r", "b\r"}},
      {"a\rb\nc\032d\ne", {"a\rb", "c"}},
      {"a\n\032\nb", {"a"}},
  };
  for (const auto& [text, ids] : cases) {
    WriteFileText(list, text);
    EXPECT_EQ(ReadEmulatedHardwareIds(), HardwareIdSet(ids)) << text;
  }
  std::remove(list.c_str());
  WriteFileText(list + "/file", "in a folder of that name");
  EXPECT_FALSE(ReadEmulatedHardwareIds());
}

TEST(MatchingTest, ThresholdsDecide) {
  // For each number of compared positions, the fewest equal ones that are enough.
  const std::pair<std::size_t, std::size_t> cases[] = {
      {1, 1},  {2, 2},  {3, 3},  {4, 3},  {5, 3},  {6, 4},   {7, 5},   {8, 6},   {9, 7},
      {10, 7}, {11, 7}, {12, 8}, {13, 8}, {14, 9}, {15, 10}, {20, 13}, {100, 61}};
  for (const auto& [length, enough] : cases) {
    Ids runtime(length, "same");
    for (std::size_t equal = length + 1; equal-- > 0;) {
      if (equal < length) runtime[equal] = "Same";
      int matches = -1;
      EXPECT_EQ(MatchHardwareIds(Ids(length, "same"), runtime, matches), equal >= enough)
          << equal << " of " << length;
      EXPECT_EQ(matches, static_cast<int>(equal));
    }
  }
}

TEST(MatchingTest, OnlyPositionsOfTheShorterListCount) {
  int matches = -1;
  EXPECT_FALSE(MatchHardwareIds({}, {}, matches));
  EXPECT_FALSE(MatchHardwareIds({"a"}, {}, matches));
  EXPECT_TRUE(MatchHardwareIds({"a", "b", "c"}, {"a", "b", "c", "d"}, matches));
  EXPECT_FALSE(MatchHardwareIds({"a", "b", "c", "d"}, {"a", "c", "d"}, matches));
  EXPECT_EQ(matches, 1);
}

}  // namespace
}  // namespace system_info
