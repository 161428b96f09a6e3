// The folders on disk: how an old one is carried over, and the promises of the file calls.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <regex>

#include "platform/windows_api.h"
#include "storage/storage_paths.h"
#include "support/scripted_machine.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;
using enum PlatformCall;
using testing::Each;

const std::string kMark = "[CopyDeviceIdFolder] ";
const std::string kFound =
    "[Debug] " + kMark + "new dir: ~/BrindleQuayWorks\n[Debug] " + kMark + "old dir: ~/Fennel\n";
const std::string kNoFile = kFound + "[Info] " + kMark + "old device.id not found\n";
const std::string kMade = kFound + "[Debug] " + kMark + "Create new dir: ~/BrindleQuayWorks\n";
const std::string kCopied = kMade + "[Debug] " + kMark + "Copy success\n";
const std::string kFailed = kMade + "[Error] " + kMark + "Copy failed\n";

class Storage : public MachineTest {
 protected:
  const std::string root = *pc.common_root;
  const std::string file = root + "/file";
};

// The entries of a call about folders, with "~" in place of `parent`.
std::string TellFolders(const std::string& parent) {
  std::string told;
  for (const std::string& line : GetId("1.5").Lines()) {
    if (line.find(kMark) != std::string::npos) told += line + '\n';
  }
  return std::regex_replace(told, std::regex(parent), "~");
}

struct Story {
  std::string old_copy, new_copy;  // "" for no folder, "-" for one without the file.
  std::string event;               // As the new folder is to be made.
  std::string log, next_log, copy_after;
};

TEST(Migration, CarriesEachOldFolderOverOnce) {
  const std::string bytes = std::string("\r\n\0\xff", 4) + std::string(9000, 'x');
  for (const auto& [old_copy, new_copy, event, log, next_log, copy_after] :
       {Story{"", "", "", "", "", "<missing>"}, Story{"-", "", "", kNoFile, kNoFile, "<missing>"},
        Story{"old", "-", "", "", "", "<missing>"}, Story{"old", "new", "", "", "", "new"},
        Story{bytes, "", "", kCopied, "", bytes}, Story{"folder", "", "", kCopied, "", ""},
        Story{"old", "", "refused", kFound, kFound, "<missing>"},
        Story{"old", "", "new file made", kFailed, "", "made"},
        Story{"old", "", "old file lost", kFailed, "", "<missing>"}}) {
    for (const bool user : {false, true}) {
      ScriptedMachine pc;
      const std::string parent = user ? *pc.user_root : *pc.common_root;
      const std::string old_file = parent + "/Fennel/device.id";
      const std::string new_file = parent + "/BrindleQuayWorks/device.id";
      if (!old_copy.empty()) WriteFileText(old_file, old_copy);
      if (!new_copy.empty()) WriteFileText(new_file, new_copy);
      if (new_copy == "-") fs::remove(new_file);
      if (old_copy == "-" || old_copy == "folder") fs::remove(old_file);
      if (old_copy == "folder") fs::create_directory(old_file);  // It opens, but cannot be read.
      if (event == "refused") pc.Fail(kCreateDirectory, ERROR_ACCESS_DENIED);
      pc.At(kCreateDirectory, "", [&] {
        if (event == "new file made") WriteFileText(new_file, "made");
        if (event == "old file lost") fs::remove(old_file);
      });
      SCOPED_TRACE(old_copy + ", " + new_copy + ", " + event);
      EXPECT_EQ(TellFolders(parent), log);
      EXPECT_EQ(TellFolders(parent), next_log);
      EXPECT_EQ(ReadFileText(new_file), copy_after);
    }
  }
}

TEST_F(Storage, CarriesTheUsersFolderOverWhenTheCommonOneFails) {
  WriteFileText(pc.OldCommon("device.id"), "common");
  WriteFileText(pc.OldUser("device.id"), "user");
  pc.Fail(kCreateDirectory, ERROR_ACCESS_DENIED, "/common/");
  GetId("1.5");
  EXPECT_EQ(ReadFileText(pc.User("device.id")) + ReadFileText(pc.OldUser("device.id")), "useruser");
}

TEST_F(Storage, MakesAFolderWithItsParents) {
  WriteFileText(file, "");
  pc.Fail(kCreateDirectory, ERROR_ACCESS_DENIED, "/refused");
  pc.Fail(kCreateDirectory, ERROR_ALREADY_EXISTS, "/raced");
  for (const std::string path : {"", "/a/b/c/", "/file", "/raced"}) {
    EXPECT_TRUE(EnsureDirectory(root + path)) << path;
  }
  EXPECT_TRUE(IsDirectory(root + "/a/b/c"));
  for (const std::string& path : {std::string(), file + "/g", root + "/d/refused/e"}) {
    EXPECT_FALSE(EnsureDirectory(path)) << path;
  }
  EXPECT_EQ(pc.Seen(kCreateDirectory).back(), root + "/d/refused");
}

TEST_F(Storage, ReplacesAFileWhenToldTo) {
  WriteFileText(file, "the old text");
  WriteFileText(root + "/source", "new");
  EXPECT_FALSE(CopyFileContents(root + "/nothing", file, true));
  pc.Fail(kDeleteFile, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(CopyFileContents(root + "/source", file, true));
  pc.Recover();
  EXPECT_EQ(ReadFileText(file), "the old text");
  EXPECT_TRUE(CopyFileContents(root + "/source", file, true));
  EXPECT_EQ(ReadFileText(file), "new");
}

HANDLE Open(const std::string& path, DWORD access) {
  return CreateFileW(ToWide(path).c_str(), access, access == GENERIC_READ ? FILE_SHARE_READ : 0,
                     nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// What can be done with a file: 1 to read it, 2 to write it, 4 to delete it.
int Admits(const std::string& path) {
  int admitted = 0;
  for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
    const HANDLE opened = Open(path, access);
    if (opened == INVALID_HANDLE_VALUE) continue;
    admitted += access == GENERIC_READ ? 1 : 2;
    CloseHandle(opened);
  }
  return admitted + (RemoveFile(path) ? 4 : 0);
}

// The same for this thread, another one and another process.
std::vector<int> AdmitsEverywhere(const std::string& path) {
  const int in_thread = std::async(std::launch::async, Admits, path).get();
  const pid_t child = fork();
  if (child == 0) _exit(Admits(path));
  int status = 0;
  waitpid(child, &status, 0);
  return {Admits(path), in_thread, WEXITSTATUS(status)};
}

TEST_F(Storage, KeepsTheShareModesOfOpenFiles) {
  for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
    const HANDLE opened = Open(file, access);
    EXPECT_THAT(AdmitsEverywhere(file), Each(access == GENERIC_READ ? 1 : 0));
    CloseHandle(opened);
  }
  std::ifstream stream(file);
  EXPECT_THAT(AdmitsEverywhere(file), Each(3));
  stream.close();
  EXPECT_EQ(Admits(file), 7);
  mkfifo(file.c_str(), 0666);
  EXPECT_EQ(Admits(file), 0);
  EXPECT_EQ(Admits(root), 0);
}

TEST_F(Storage, RefusesWhatTheLibraryDoesNotPass) {
  using Four = std::array<DWORD, 4>;
  for (const auto& [access, share, disposition, flags] :
       {Four{GENERIC_READ, 0, 4, 128}, Four{GENERIC_WRITE, 1, 4, 128},
        Four{GENERIC_READ, 1, 3, 128}, Four{GENERIC_READ, 1, 4, 0}}) {
    EXPECT_EQ(
        CreateFileW(ToWide(file).c_str(), access, share, nullptr, disposition, flags, nullptr),
        INVALID_HANDLE_VALUE);
  }
  std::array<char, 8192> buffer;
  DWORD read = 0;
  const HANDLE opened = Open(file, GENERIC_READ);
  EXPECT_FALSE(ReadFile(opened, buffer.data(), 8192, &read, nullptr));
  CloseHandle(opened);
}

}  // namespace
}  // namespace system_info
