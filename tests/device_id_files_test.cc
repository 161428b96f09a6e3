// Where format 1.6 keeps its id: the copies in the common and in the user folder.

#include <filesystem>

#include "support/scripted_machine.h"

namespace system_info {
namespace {

using enum PlatformCall;
using testing::Each;

const std::string kNone = "<missing>";
const std::string kNoFolder = "<no folder>";

struct Story {
  std::string common, user;                                // The copies before the call.
  std::vector<std::pair<PlatformCall, const char*>> fail;  // Calls about paths like these.
  std::string id, common_after, user_after;
  std::string log;  // A letter for each entry but those that tell how the hardware is read.
};

class DeviceIdFiles : public MachineTest {};

void Tell(const Story& story) {
  const std::map<std::string, char> letters = {
      {"[Info] HID was loaded from common file: " + story.common.substr(0, 8191), 'C'},
      {"[Info] HID was loaded from user file: " + story.user, 'U'},
      {"[Info] Can not load HID from common and user directory", 'N'},
      {"[Info] Device id version 1.6 is incorrect.", 'I'},
      {"[Debug] Received HID: " + story.id, 'H'},
      {"[Error] Can not open file to read", 'o'},
      {"[Error] Unable to read from file", 'r'},
      {"[Error] ", 'e'},
      {"[Error] Can not open file to write", 'O'},
      {"[Error] Unable to write to file", 'W'},
      {"[Error] Unable to write in common dir", 'c'},
      {"[Error] Unable to write in user dir", 'u'}};
  ScriptedMachine pc;
  if (story.common != kNoFolder) WriteFileText(pc.Common("device.id"), story.common);
  if (story.common == kNone) std::filesystem::remove(pc.Common("device.id"));
  if (story.user != kNoFolder) WriteFileText(pc.User("device.id"), story.user);
  for (const auto& [call, path] : story.fail) pc.Fail(call, 10, path);
  const Reply reply = GetId("1.6");
  EXPECT_EQ(reply.id, story.id) << reply;
  EXPECT_EQ(ReadFileText(pc.Common("device.id")), story.common_after);
  EXPECT_EQ(ReadFileText(pc.User("device.id")), story.user_after);
  std::string log;
  for (const std::string& line : reply.Lines()) {
    const auto letter = letters.find(line);
    if (letter != letters.end())
      log += letter->second;
    else if (!line.starts_with("[Debug]"))
      log += line;
  }
  EXPECT_EQ(log, story.log);
}

TEST_F(DeviceIdFiles, FollowThePolicyBetweenTheCopies) {
  const std::string a = "2-0-01234567-89ab-cdef-0123-456789abcdef";
  const std::string b = "9-5-ABCDEF01-2345-6789-ABCD-EF0123456789";
  const std::string n = "1-6-" + GetId("1.5").id.substr(4);
  const std::string n10 = n.substr(0, 10);
  const std::string x(8191, 'x');
  const Story stories[] = {
      // A good common copy is the id, and a user copy beside it goes.
      {a, b, {}, a, a, kNone, "C"},
      {b, kNoFolder, {}, b, b, kNone, "C"},
      {a, b, {{kDeleteFile, "/user/"}}, a, a, b, "C"},
      // Else a user copy moves to the common folder, or stays where it is.
      {kNoFolder, a, {}, a, a, kNone, "oU"},
      {kNone, a, {}, a, a, kNone, "eU"},
      {a, b, {{kReadFile, "/common/"}}, b, b, kNone, "rU"},
      {kNoFolder, a, {{kCreateDirectory, "/common/"}}, a, kNone, a, "oUOc"},
      {a, b, {{kCreateFile, "/common/"}}, b, kNone, b, "oUOc"},
      {"", a, {{kWriteFile, "/common/"}}, a, "", a, "eUWc"},
      {"", n, {{kWriteFileShort, "/common/"}}, n, n10, n, "eUec"},
      // Without a copy an id is made and stored, in the user folder if need be, or nowhere.
      {kNoFolder, kNoFolder, {}, n, n, kNone, "ooNIH"},
      {kNone, "", {{kDeleteFile, "/user/"}}, n, n, "", "eeNIH"},
      {a, b, {{kReadFile, ""}}, n, n, kNone, "rrNIH"},
      {kNoFolder, kNoFolder, {{kCreateDirectory, "/common/"}}, n, kNone, n, "ooNIHOc"},
      {"", "", {{kWriteFile, "/common/"}}, n, "", n, "eeNIHWc"},
      {"", "", {{kWriteFileShort, "/common/"}}, n, n10, n, "eeNIHec"},
      {kNoFolder, kNoFolder, {{kCreateDirectory, ""}}, n, kNone, kNone, "ooNIHOcOu"},
      {a, b, {{kCreateFile, ""}}, n, kNone, kNone, "ooNIHOcOu"},
      {a, b, {{kCreateFile, ""}, {kDeleteFile, ""}}, n, a, b, "ooNIHOcOu"},
      {"", "", {{kWriteFile, ""}}, n, "", "", "eeNIHWcWu"},
      {"", "", {{kWriteFileShort, ""}}, n, n10, n10, "eeNIHeceu"},
      // A text that is no id gives way, without a look at the other copy.
      {a + '\n', b, {}, n, n, kNone, "CIH"},
      {x + 'y', b, {}, n, n, kNone, "CIH"},
      {kNone, "x", {}, n, n, kNone, "eUIH"},
      {kNoFolder, "x", {{kCreateDirectory, "/common/"}}, n, kNone, n, "oUOcIHOc"},
      // What cannot be deleted keeps its length.
      {std::string(43, 'x'), kNoFolder, {{kDeleteFile, ""}}, n, n + "xxx", kNone, "CIH"}};
  for (const Story& story : stories) Tell(story);
}

TEST_F(DeviceIdFiles, KeepAUserCopyBesideABadCommonOne) {
  WriteFileText(pc.Common("device.id"), "bad");
  WriteFileText(pc.User("device.id"), "good");
  pc.At(kCoInitializeEx, "", [] { throw 7; });  // Behind the load, before an id is saved.
  EXPECT_EQ(GetId("1.6").result, 4);
  EXPECT_EQ(ReadFileText(pc.User("device.id")), "good");
}

TEST_F(DeviceIdFiles, StandInTheRootWhereTheFoldersAreUnknown) {
  pc.common_root = pc.user_root = std::nullopt;
  for (const auto call : {kCreateFile, kDeleteFile, kCreateDirectory}) pc.Fail(call, 5);
  EXPECT_THAT(GetId("1.6").log, testing::Not(testing::HasSubstr("CopyDeviceIdFolder")));
  EXPECT_EQ(pc.Seen(kCreateFile), std::vector<std::string>(4, "/device.id"));
}

TEST_F(DeviceIdFiles, BelongToFormat16Alone) {
  WriteFileText(pc.Common("device.idv2"), "2-0-01234567-89ab-cdef-0123-456789abcdef");
  pc.LoseHardware();
  for (const char* version : {"1.0", "1.1", "1.2", "1.4", "1.5"}) {
    EXPECT_NE(GetId(version).id, GetId(version).id);
  }
  EXPECT_TRUE(pc.Seen(kCreateFile).empty());
  const std::string random = GetId("1.6").id;
  EXPECT_EQ(ReadFileText(pc.Common("device.id")), random);
  EXPECT_EQ(GetId("1.6").id, random);
  EXPECT_THAT(pc.Seen(kCreateFile), Each(testing::EndsWith("device.id")));
}

}  // namespace
}  // namespace system_info
