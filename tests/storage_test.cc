// What a folder and an open file admit.

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <future>

#include "platform/unique_handle.h"
#include "support/file_operations.h"
#include "support/scripted_machine.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

class Storage : public MachineTest {
 protected:
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

// The same for another thread, another process and this thread.
std::vector<int> AdmitsEverywhere(const std::string& path) {
  const int in_thread = std::async(std::launch::async, Admits, path).get();
  const pid_t child = fork();
  if (child == 0) _exit(Admits(path));
  int status = 0;
  waitpid(child, &status, 0);
  return {in_thread, WEXITSTATUS(status), Admits(path)};
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

}  // namespace
}  // namespace system_info
