// What a folder and an open file admit, and what is refused in a state file's place.

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>

#include "platform/linux/linux_machine.h"
#include "platform/unique_handle.h"
#include "support/file_operations.h"
#include "support/scripted_machine.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kSomebodyElse = 4711;

const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";

class Storage : public MachineTest {
 protected:
  void NeedRoot() {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  }

  const std::string root = *pc.common_root;
  const std::string file = root + "/file";
};

TEST_F(Storage, MakesAFolderWithItsParentsButNoFileOfNothing) {
  EXPECT_TRUE(EnsureDirectory(root + "/a/b/c/"));
  EXPECT_TRUE(IsDirectory(root + "/a/b/c"));
  pc.Fail(PlatformCall::kCreateDirectory, ERROR_ACCESS_DENIED, "/refused");
  EXPECT_FALSE(EnsureDirectory(root + "/refused/d"));
  EXPECT_EQ(pc.Seen(PlatformCall::kCreateDirectory).back(), root + "/refused");
  EXPECT_FALSE(CopyFileContents(root + "/refused", file, true));
}

HANDLE Open(const std::string& path, DWORD access) {
  return CreateFileW(ToWide(path).c_str(), access, access == GENERIC_READ ? FILE_SHARE_READ : 0,
                     nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// What can be done with a file: 1 to read it, 2 to write it, 4 to delete it.
int Admits(const std::string& path) {
  const int reads = UniqueFile(Open(path, GENERIC_READ)).valid() ? 1 : 0;
  const int writes = UniqueFile(Open(path, GENERIC_WRITE)).valid() ? 2 : 0;
  return reads + writes + (RemoveFile(path) ? 4 : 0);
}

// What `action` returns in a process of its own, of that user.
int InChild(uid_t user, const std::function<int()>& action) {
  const pid_t child = fork();
  if (child == 0) _exit(seteuid(user) == 0 ? action() : 99);
  int status = 0;
  waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

// The same for another thread, another process and this thread.
std::vector<int> AdmitsEverywhere(const std::string& path) {
  const int in_thread = std::async(std::launch::async, Admits, path).get();
  return {in_thread, InChild(geteuid(), [&] { return Admits(path); }), Admits(path)};
}

TEST_F(Storage, KeepsTheShareModesOfOpenFiles) {
  for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
    const UniqueFile opened(Open(file, access));
    EXPECT_THAT(AdmitsEverywhere(file), testing::Each(access == GENERIC_READ ? 1 : 0));
  }
  std::ifstream stream(file);
  EXPECT_THAT(AdmitsEverywhere(file), testing::Each(3));
  stream.close();
  EXPECT_FALSE(UniqueFile(Open(file, GENERIC_READ | GENERIC_WRITE)).valid());
  EXPECT_EQ(Admits(file), 7);
  EXPECT_EQ(Admits(root), 0);
}

TEST_F(Storage, GivesUpALockThatAForkedChildStillHas) {
  auto opened = std::make_unique<UniqueFile>(Open(file, GENERIC_WRITE));
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const pid_t child = fork();
  char byte = 0;
  if (child == 0) _exit(close(pipe_ends[1]) == 0 && read(pipe_ends[0], &byte, 1) == 0 ? 0 : 1);
  opened.reset();
  EXPECT_EQ(UniqueFile(Open(file, GENERIC_WRITE)).valid(), true);
  close(pipe_ends[1]);
  waitpid(child, nullptr, 0);
  close(pipe_ends[0]);
}

TEST_F(Storage, AnAccountThatMayOnlyReadKeepsNobodyFromReading) {
  NeedRoot();
  WriteFileText(file, "text");
  fs::permissions(file, fs::perms(0644));
  for (fs::path above = root; above != fs::temp_directory_path(); above = above.parent_path()) {
    fs::permissions(above, fs::perms(0755));
  }
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const int status = InChild(kSomebodyElse, [&] {
    const int held = open(file.c_str(), O_RDONLY);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    const bool locked = fcntl(held, F_OFD_SETLK, &lock) == 0;
    flock(held, LOCK_EX);
    if (fork() == 0) {  // The grandchild goes on holding it.
      close(pipe_ends[1]);
      char byte = 0;
      _exit(static_cast<int>(read(pipe_ends[0], &byte, 1)));
    }
    return held >= 0 && !locked ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(UniqueFile(Open(file, GENERIC_READ)).valid());
  EXPECT_TRUE(UniqueFile(Open(file, GENERIC_WRITE)).valid());
  close(pipe_ends[1]);
  close(pipe_ends[0]);
}

// What somebody who may write in the common folder could put in a state file's place.
const std::map<std::string, std::function<void(const std::string&)>> kTraps = {
    {"a FIFO", [](auto& path) { mkfifo(path.c_str(), 0666); }},
    {"a device", [](auto& path) { fs::create_symlink("/dev/zero", path); }},
    {"a folder", [](auto& path) { fs::create_directory(path); }},
    {"a foreign link to nothing",
     [](auto& path) {
       fs::create_symlink(path + ".target", path);
       EXPECT_EQ(lchown(path.c_str(), kSomebodyElse, kSomebodyElse), 0);
     }},
    {"a foreign link to a file",
     [](auto& path) {
       WriteFileText(path + ".target", "text");
       fs::create_symlink(path + ".target", path);
       EXPECT_EQ(lchown(path.c_str(), kSomebodyElse, kSomebodyElse), 0);
     }},
};

TEST_F(Storage, OnlyARegularFileIsAStateFile) {
  NeedRoot();
  for (const auto& [what, set] : kTraps) {
    for (const std::string name : {"device.idv2", "device.id", "hid_settings"}) {
      fs::remove_all(pc.Common(""));
      fs::remove_all(pc.User(""));
      fs::create_directory(pc.Common(""));
      const std::string path = pc.Common(name);
      set(path);
      const auto before = fs::symlink_status(path);
      EXPECT_EQ(Admits(path), 0) << what;
      EXPECT_FALSE(InputFile(path).is_open()) << what;
      EXPECT_FALSE(OutputFile(path).is_open()) << what;
      for (const char* call : {"first", "second"}) {
        EXPECT_EQ(GetId("2.0").id, kId) << what << " as " << name << ", " << call << " call";
      }
      EXPECT_EQ(fs::symlink_status(path).type(), before.type()) << what;
      const std::string target = ReadFileText(path + ".target");
      EXPECT_EQ(target, what == "a foreign link to a file" ? "text" : "<missing>") << what;
    }
  }
}

TEST_F(Storage, FollowsALinkThatRootOrThisUserMade) {
  fs::create_directory(pc.Common(""));
  fs::create_symlink("elsewhere", pc.Common("hid_settings"));
  EXPECT_TRUE(OutputFile(pc.Common("hid_settings")).Write("text"));
  EXPECT_EQ(ReadFileText(pc.Common("elsewhere")), "text");
  fs::create_symlink("loop", pc.Common("loop"));
  EXPECT_FALSE(InputFile(pc.Common("loop")).is_open());
}

TEST_F(Storage, NothingIsWritableForEverybody) {
  const mode_t mask = umask(0);
  EXPECT_EQ(GetId("2.0").result, 0);
  umask(mask);
  for (const std::string name : {"", "device.idv2", "hid_settings"}) {
    const auto permissions = fs::status(pc.Common(name)).permissions();
    EXPECT_EQ(permissions & fs::perms::others_write, fs::perms::none) << name;
    EXPECT_NE(permissions & fs::perms::group_write, fs::perms::none) << name;
  }
}

TEST_F(Storage, RunningOutOfDescriptorsCostsNoStoredId) {
  const Reply first = GetId("2.0");
  pc.Set(L"Win32_BaseBoard", L"SerialNumber", L"BOARD8");
  pc.Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", L"DEADBEEF");
  const std::string record = ReadFileText(pc.Common("hid_settings"));
  rlimit usual = {};
  getrlimit(RLIMIT_NOFILE, &usual);
  const int next = dup(0);
  close(next);
  // No descriptor, one, two: the call fails, or is as good as with more of them.
  for (rlim_t more = 0; more < 3; ++more) {
    const rlimit few = {static_cast<rlim_t>(next) + more, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const Reply reply = GetId("2.0");
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(reply.id, reply.result == 0 ? first.id : "<untouched>") << reply;
    EXPECT_THAT(reply.result, testing::AnyOf(0, 3)) << reply;
    if (more > 0) continue;
    EXPECT_THAT(reply.log, testing::HasSubstr("[Error] Error in GetHardwareId: " + pc.Common("") +
                                              "device.idv2: EMFILE, too many open files"));
  }
  EXPECT_EQ(GetId("2.0").id, first.id);
  EXPECT_EQ(ReadFileText(pc.Common("hid_settings")), record);
}

// The folders of the real computer, on a made-up tree.
class UserFolder : public Storage {
 protected:
  UserFolder() {
    SetPresentMachine(&machine);
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_DATA_HOME");
    WriteFileText(root + "/var", "keeps the common folder from being made");
  }

  const std::string home = root + "/home";
  LinuxMachine machine{root};
};

TEST_F(UserFolder, IsMadeWhenSomethingIsStoredInIt) {
  EXPECT_EQ(GetId("1.5").result, 0);
  EXPECT_FALSE(fs::exists(home));
  EXPECT_EQ(GetId("2.0").result, 0);
  EXPECT_NE(ReadFileText(home + "/.local/share/BrindleQuayWorks/device.idv2"), "<missing>");
  EXPECT_EQ(fs::status(home + "/.local").permissions(), fs::perms(0700));
}

TEST_F(UserFolder, BelongsToTheUser) {
  const std::string own = root + "/own", foreign = root + "/foreign";
  fs::create_directory(foreign);
  const bool given_away = chown(foreign.c_str(), kSomebodyElse, kSomebodyElse) == 0;
  for (const std::string& value : {std::string("."), own, foreign, own + "/../own"}) {
    setenv("XDG_DATA_HOME", value.c_str(), 1);
    const bool is_taken = value == own || (value == foreign && !given_away);
    EXPECT_EQ(machine.UserRoot(), is_taken ? value : home + "/.local/share");
  }
}

TEST_F(UserFolder, IsNotExchangedUnderAnOperation) {
  NeedRoot();
  const std::string own = root + "/own", foreign = root + "/foreign";
  fs::create_directory(own);
  fs::create_directory(foreign);
  ASSERT_EQ(chown(foreign.c_str(), kSomebodyElse, kSomebodyElse), 0);
  setenv("XDG_DATA_HOME", own.c_str(), 1);
  ASSERT_EQ(machine.UserRoot(), own);
  fs::rename(own, own + ".old");
  fs::create_symlink(foreign, own);
  EXPECT_FALSE(EnsureDirectory(own + "/BrindleQuayWorks"));
  EXPECT_FALSE(UniqueFile(Open(own + "/file", GENERIC_WRITE)).valid());
  EXPECT_FALSE(PathExists(own + "/."));
  EXPECT_TRUE(fs::is_empty(foreign));
}

}  // namespace
}  // namespace system_info
