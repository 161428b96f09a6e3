// Where format 1.6 keeps its id: the copies in the common, the user and the old folders.

#include <filesystem>
#include <sstream>

#include "support/scripted_machine.h"

namespace system_info {
namespace {

using enum PlatformCall;

const std::string kA = "2-0-01234567-89ab-cdef-0123-456789abcdef";
const std::string kB = "9-5-ABCDEF01-2345-6789-ABCD-EF0123456789";
const std::string kNew = "1-6-e605da79-8246-9201-b359-b533fafc9984";  // Of the scripted hardware.

const std::map<std::string, std::string> kTexts = {
    {"A", kA},     {"bad", kA + "\n++"},  {"long", std::string(8192, 'x')},
    {"B", kB},     {"N+", kNew + "\n++"}, {"N10", kNew.substr(0, 10)},
    {"N", kNew},   {"-", "<missing>"},    {"?", "<untouched>"},
    {"empty", ""}, {".", "<missing>"}};

const std::map<std::string, PlatformCall> kCalls = {
    {"open", kCreateFile},      {"read", kReadFile},     {"write", kWriteFile},
    {"short", kWriteFileShort}, {"delete", kDeleteFile}, {"mkdir", kCreateDirectory}};

const std::map<std::string, std::string> kLetters = {
    {"[Info] [CopyDeviceIdFolder] old device.id not found", "0"},
    {"[Debug] [CopyDeviceIdFolder] Copy success", "s"},
    {"[Error] [CopyDeviceIdFolder] Copy failed", "f"},
    {"[Info] Can not load HID from common and user directory", "N"},
    {"[Info] Device id version 1.6 is incorrect.", "I"},
    {"[Debug] Received HID: " + kNew, "H"},
    {"[Error] Can not open file to read", "o"},
    {"[Error] Unable to read from file", "r"},
    {"[Error] ", "e"},
    {"[Error] Can not open file to write", "O"},
    {"[Error] Unable to write to file", "W"},
    {"[Error] Unable to write in common dir", "c"},
    {"[Error] Unable to write in user dir", "u"},
    {"[Error] Unexpected error in GetHardwareId", "!"}};

// On each line the copy in both old folders, the common and the user copy ("-" is a folder without
// the file, "." no folder), the call that fails, there or everywhere, the id, the common and the
// user copy afterwards, a letter for each entry of the log, and the moral.
constexpr char kStories[] = R"(
  .     A     B     -             A A     -   C              a good common copy is the only one
  .     .     A     -             A A     -   oU             a user copy takes its place
  .     A     B     read/common/  B B     -   rU             an unreadable copy is none
  .     A     B     open/common/  B -     B   oUOc           a user copy stays if no other is made
  .     empty A     write/common/ A empty A   eUWc           or written
  .     .     .     -             N N     -   ooNIH          a new id goes to the common folder
  .     -     empty -             N N     -   eeNIH          and no user copy remains
  .     .     .     mkdir/common/ N -     N   ooNIHOc        else it goes to the user folder
  .     A     B     open          N -     -   ooNIHOcOu      or nowhere
  .     .     .     lost          N -     -   ooNIHOcOu      as when the folders are unknown
  .     empty empty short         N N10   N10 eeNIHeceu      or in part to both
  .     bad   A     halt          ? bad   A   CI!            a bad copy costs no good one
  .     bad   .     delete        N N+    -   CIH            what cannot go keeps its length
  .     long  B     -             N N     -   CIH            of a file 8191 bytes are read
  A     .     .     -             A A     -   ndmsndmsC      both old copies are carried over
  A     -     B     -             B B     -   eU             unless the new folder is there
  -     .     .     -             N N     -   nd0nd0ooNIH    an old folder alone makes no new one
  A     .     .     mkdir/common/ A -     A   ndndmsoUOc     each goes by itself
  A     .     .     race          B B     -   ndmfndmsC      what came in between stays
  empty .     .     -             N N     -   ndmsndmseeNIH  a failed transfer goes unnoticed
)";

class DeviceIdFiles : public MachineTest {};

TEST_F(DeviceIdFiles, FollowThePolicyBetweenTheCopies) {
  std::istringstream stories(kStories);
  std::string old, common, user, trouble, id, common_after, user_after, letters, moral;
  while (stories >> old >> common >> user >> trouble >> id >> common_after >> user_after >>
         letters) {
    std::getline(stories, moral);
    ScriptedMachine machine;
    auto entries = kLetters;
    for (const std::string& root : {*machine.common_root, *machine.user_root}) {
      entries["[Debug] [CopyDeviceIdFolder] new dir: " + root + "/BrindleQuayWorks"] = "n";
      entries["[Debug] [CopyDeviceIdFolder] old dir: " + root + "/Fennel"] = "d";
      entries["[Debug] [CopyDeviceIdFolder] Create new dir: " + root + "/BrindleQuayWorks"] = "m";
    }
    for (const auto& [word, text] : kTexts) {
      entries["[Info] HID was loaded from common file: " + text.substr(0, 8191)] = "C";
      entries["[Info] HID was loaded from user file: " + text] = "U";
    }
    for (const auto& [copy, path] : {std::pair(old, machine.OldCommon("device.id")),
                                     {old, machine.OldUser("device.id")},
                                     {common, machine.Common("device.id")},
                                     {user, machine.User("device.id")}}) {
      if (copy != ".") WriteFileText(path, kTexts.at(copy));
      if (copy == "-") std::filesystem::remove(path);
    }
    for (const auto& [name, call] : kCalls) {
      if (trouble.starts_with(name)) machine.Fail(call, 10, trouble.substr(name.size()));
    }
    if (trouble == "lost") machine.common_root = machine.user_root = std::nullopt;
    if (trouble == "lost") machine.Fail(kCreateFile, 10);
    if (trouble == "halt") machine.At(kCoInitializeEx, "", [] { throw 7; });
    if (trouble == "race") {
      machine.At(kCreateDirectory, "", [&] { WriteFileText(machine.Common("device.id"), kB); });
    }

    const Reply reply = GetId("1.6");
    SCOPED_TRACE(moral + '\n' + testing::PrintToString(reply));
    std::string told;
    for (const std::string& line : reply.Lines()) {
      if (entries.contains(line) || !line.starts_with("[Debug]")) {
        told += entries.contains(line) ? entries[line] : line;
      }
    }
    EXPECT_EQ(told, letters);
    EXPECT_EQ(reply.id, kTexts.at(id));
    EXPECT_EQ(ReadFileText(machine.OldCommon("device.id")), kTexts.at(old));
    EXPECT_EQ(ReadFileText(machine.Common("device.id")), kTexts.at(common_after));
    EXPECT_EQ(ReadFileText(machine.User("device.id")), kTexts.at(user_after));
  }
  EXPECT_TRUE(stories.eof());
}

TEST_F(DeviceIdFiles, KeepARandomIdOfFormat16Alone) {
  pc.LoseHardware();
  for (const char* version : {"1.0", "1.5"}) EXPECT_NE(GetId(version).id, GetId(version).id);
  EXPECT_TRUE(pc.Seen(kCreateFile).empty());
  EXPECT_EQ(GetId("1.6").id, GetId("1.6").id);
  EXPECT_THAT(pc.Seen(kCreateFile), testing::Each(testing::EndsWith("/device.id")));
}

}  // namespace
}  // namespace system_info
