// What doctor finds where no machine of a test can be made so, and what is left of a value in a
// text.

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "inspection/health_checks.h"
#include "inspection/redactor.h"

namespace system_info {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kReading =
    "[23:59:59:990] [Debug] We are getting the information about the hardware in the Windows "
    "environment\n";
constexpr const char* kVolume =
    "[00:00:12:000] [Debug] WMI property \"VolumeSerialNumber\" FOR CLASS \"win32_logicaldisk "
    "WHERE deviceid=\"C:\"\" = \"1234abcd\"\n";

// Codes and levels of all that is not well.
std::vector<std::string> IllsOf(const std::function<void(HealthFacts&)>& make_ill) {
  HealthFacts facts;
  facts.machine.windows = true;
  facts.machine.hardware = std::vector<std::string>{"1234abcd", "pf0xyz"};
  facts.folders.resize(2);
  facts.folders[0].can_store = true;
  facts.folders[0].attributes.kind = FileKind::kFolder;
  make_ill(facts);
  std::vector<std::string> ills;
  for (const HealthFinding& finding : CheckHealth(facts)) {
    if (finding.level != HealthLevel::kOk) ills.push_back(finding.code);
  }
  return ills;
}

TEST(HealthTest, TellsWhatOnlyOddMachinesHave) {
  EXPECT_THAT(IllsOf([](auto& /*facts*/) {}), ElementsAre());
  EXPECT_THAT(IllsOf([](auto& facts) { facts.folders[0].file_system.without_locks = true; }),
              ElementsAre("no-locks"));
  EXPECT_THAT(
      IllsOf([](auto& facts) { facts.machine.hardware_log = std::string(kReading) + kVolume; }),
      ElementsAre("slow-source", "one-part"));
  EXPECT_THAT(IllsOf([](auto& facts) {
                facts.machine.hardware_log =
                    std::string(kReading) + "[23:59:59:991] [Error] Failed to connect server\n";
                facts.machine.hardware.reset();
              }),
              ElementsAre("hardware-unreadable"));
  EXPECT_THAT(IllsOf([](auto& facts) {
                facts.machine.hardware_log =
                    std::string(kReading) + "[23:59:59:991] [Error] Failed to execute query\n";
              }),
              ElementsAre("value-unreadable"));
}

TEST(RedactorTest, LeavesNothingOfAValueInAnySpelling) {
  Redactor redactor("0123456789abcdef");
  redactor.Learn("00:1a:2b:3c:4d:5e");
  redactor.Learn("2-0-01234567-89ab-cdef-0123-456789abcdef");
  redactor.Learn("PF0XYZ-4711");
  redactor.Learn("Q7");
  redactor.LearnName("J\u00e9r\u00f4me");
  redactor.LearnFrom("C:\\Users\\al\\AppData and 9A-9B-9C-9D-9E-9F");
  for (const char* text :
       {"at 001A2B3C4D5E", "at 00-1A-2B-3C-4D-5E", "at e5:d4:c3:b2:a1:00", "at 5e4d3c2b1a00",
        "at 1a:2b:3c:4d", "id 1-6-01234567-89AB-CDEF-0123-456789ABCDEF", "id 4567-89ab-cdef",
        "is pf0xyz4711", "is 1174-zyx0fp", "is xpf0xyz.4711y", "is pf 0xyz 47", "is \"q7\"",
        "of J\u00c9R\u00d4ME", "in /home/al/x", "at 9A:9B:9C:9D:9E:9F"}) {
    const std::string redacted = redactor.Text(text);
    EXPECT_EQ(redacted.substr(0, 3), std::string(text, 3)) << redacted;
    EXPECT_THAT(redacted, Not(HasSubstr(std::string(text).substr(4, 8)))) << text;
  }
  EXPECT_EQ(redactor.Text("a q7, all of \"defaultstring\""), "a q7, all of \"defaultstring\"");
  EXPECT_EQ(redactor.Value("2-0-01234567-89ab-cdef-0123-456789abcdef").substr(4),
            redactor.Text("01234567-89ab-cdef-0123-456789abcdef"));
  EXPECT_NE(redactor.Value("PF0XYZ-4711"), redactor.Value("pf0xyz4711"));
}

}  // namespace
}  // namespace system_info
