#include "log_entries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace system_info {
namespace {

using testing::ElementsAre;

std::vector<std::string> Entries(const std::string& log) {
  std::vector<std::string> shown;
  for (const auto& [time, level, message] : ParseLog(log)) {
    shown.push_back(time + '|' + level + '|' + message);
  }
  return shown;
}

TEST(ParseLog, BeginsAnEntryAtEachHeader) {
  EXPECT_THAT(Entries("[09:05:03:042] [Debug] a\n[23:59:59:999] [Info]  \n"
                      "[00:00:00:000] [Info]   b\n[00:00:00:001] [Error] c [Info]  d\n"),
              ElementsAre("09:05:03:042|Debug|a", "23:59:59:999|Info|", "00:00:00:000|Info| b",
                          "00:00:00:001|Error|c [Info]  d"));
}

TEST(ParseLog, LeavesAnyOtherLineInTheMessageBeforeIt) {
  for (const std::string line :
       {"", "\xff", "\r", "[09:05:03.042] [Info]  a", "[9:05:03:042] [Info]  a",
        "[0a:05:03:042] [Info]  a", "[09:05:03:042] [Info] a", "[09:05:03:042] [Warn]  a",
        " [09:05:03:042] [Info]  a"}) {
    EXPECT_THAT(Entries("[09:05:03:042] [Debug] x\n" + line + "\n[09:05:03:042] [Error] y\n"),
                ElementsAre("09:05:03:042|Debug|x\n" + line, "09:05:03:042|Error|y"));
  }
}

TEST(ParseLog, KeepsWhatACutLogStillTells) {
  const std::string log = "[09:05:03:042] [Debug] abc\n[09:05:03:107] [Error] de";
  EXPECT_THAT(Entries(log), ElementsAre("09:05:03:042|Debug|abc", "09:05:03:107|Error|de"));
  EXPECT_THAT(Entries(log.substr(0, 50)),
              ElementsAre("09:05:03:042|Debug|abc", "09:05:03:107|Error|"));
  for (std::size_t size = 26; size < 50; ++size) {
    EXPECT_THAT(Entries(log.substr(0, size)), ElementsAre("09:05:03:042|Debug|abc")) << size;
  }
  EXPECT_THAT(Entries(log.substr(0, 25)), ElementsAre("09:05:03:042|Debug|ab"));
  EXPECT_THAT(Entries("x\n" + log.substr(0, 22)), ElementsAre());
}

}  // namespace
}  // namespace system_info
