// Format 2.0 to the tick and under failures. The stories of PCs tell what each outcome is.

#include <filesystem>
#include <stdexcept>

#include "support/failing_allocation.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

// By md5sum, what the scripted machine's hardware gives, and with both disk and board replaced.
const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";
const std::string kOtherId = "2-0-0d279e0a-c3c2-393f-256c-e20d6ff74d62";

class LifeTest : public MachineTest {
 protected:
  static Reply Call() {
    Reply reply = GetId("2.0");
    EXPECT_EQ(reply.result, 0) << reply;
    return reply;
  }
};

TEST_F(LifeTest, HardwareIsComparedFromTheTenthDayOn) {
  EXPECT_EQ(Call().id, kId);
  pc.Set(L"Win32_BaseBoard", L"SerialNumber", L"BOARD8");
  pc.Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", L"DEADBEEF");
  // The date is kept in whole seconds; the age is not.
  pc.PassDays(10);
  pc.ticks -= 1;
  EXPECT_EQ(Call().id, kId);
  pc.ticks += 1;
  EXPECT_EQ(Call().id, kOtherId);
}

TEST_F(LifeTest, AnIdIsStoredBeforeItsHardwareIsListedAndBeforeItsRecord) {
  using enum PlatformCall;
  for (const auto& [call, nth] : {std::pair(kCoInitializeEx, 2), {kWriteStream, 1}}) {
    std::filesystem::remove_all(pc.Common(""));
    int seen = 0;
    pc.At(call, "", [&seen, last = nth] {
      if (++seen == last) throw std::runtime_error("torn");
    });
    EXPECT_EQ(GetId("2.0").result, 3);
    EXPECT_EQ(ReadFileText(pc.Common("device.idv2")), "1-6-" + kId.substr(4));
    EXPECT_TRUE(ReadFileText(pc.Common("hid_settings")).size() <= (call == kWriteStream ? 0 : 9));
  }
}

TEST_F(LifeTest, RunningOutOfMemoryCostsNoStoredId) {
  // Short values need no memory: a variant whose copy fails is a false alarm for the sanitizer.
  for (auto& [class_text, rows] : pc.wmi) rows = {{{rows[0].begin()->first, L"7"}}};
  const std::string part = "a part with a long name";
  WriteFileText(pc.Common("hardware_ids.emulated"), part + "\n" + part + "\n" + part);
  WriteFileText(pc.Common("device.idv2"), "1-6-" + kOtherId.substr(4));
  StoredRecord record;
  record.device_id = kOtherId;
  record.ids = {part, part, part};
  WriteFileText(pc.Common("hid_settings"), record.Bytes());
  const auto ask = [](char* id, char* log) {
    return GetHardwareIdMod(id, 64, "2.0", log, 16384, DEVICEID_USE_EMULATED_HARDWARE_IDS);
  };
  bool failed = true;
  for (int nth = 0; failed || nth < 2; ++nth) {
    pc.PassDays(10);
    char id[64] = "";
    char log[16384] = "";
    {
      const FailingNew memory(nth, false);
      ask(id, log);
      failed = memory.failed();
    }
    pc.PassDays(10);
    EXPECT_EQ(ask(id, log), 0) << nth << log;
    EXPECT_EQ(id, kOtherId) << nth << log;
  }
}

}  // namespace
}  // namespace system_info
