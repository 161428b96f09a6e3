#include "inspection/log_entries.h"

#include <gtest/gtest.h>

namespace system_info {

TEST(ParseLog, BeginsAnEntryAtEachWholeHeader) {
  const std::string log =
      "left out\n[09:05:03:042] [Debug] a\n\n[0a:05:03:042] [Info]  b\n[23:59:59:999] [Info]   c";
  const std::vector<LogEntry> entries = ParseLog(log);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[1].time + entries[0].level + entries[1].level, "23:59:59:999DebugInfo");
  EXPECT_EQ(entries[0].message + entries[1].message, "a\n\n[0a:05:03:042] [Info]  b c");
  // A piece of a header that was cut off belongs to no message.
  for (std::size_t cut = 3; cut <= 26; ++cut) {
    const auto left = ParseLog({log.data(), log.size() - cut});
    EXPECT_EQ(left.size() == 1 ? left[0].message : "", entries[0].message) << cut;
  }
}

}  // namespace system_info
