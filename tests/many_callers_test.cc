// Eight processes of eight threads that ask for format 2.0 at the same time.

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>
#include <thread>

#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

constexpr int kProcesses = 8;
constexpr int kThreads = 8;

const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";
const std::string kStoredId = "1-6-e605da79-8246-9201-b359-b533fafc9984";

// A thousand is a long look; the default keeps the suite fast.
int CallsPerThread() {
  const char* calls = std::getenv("DEVICEID_CALLS");
  return calls != nullptr ? std::atoi(calls) : 30;
}

// Answers without a lock, which would order the threads and hide a race.
class QuietMachine : public ScriptedMachine {
 public:
  std::optional<std::uint32_t> FailureOf(PlatformCall, std::string_view) override { return {}; }
};

// Shared by the processes.
struct Tally {
  std::atomic<int> waiting, other_ids, failures;
  std::array<std::atomic<int>, 16> results;
};

void CallOften(Tally& tally) {
  for (++tally.waiting; tally.waiting < kProcesses * kThreads;) std::this_thread::yield();
  for (int i = 0; i < CallsPerThread(); ++i) {
    const Reply reply = GetId("2.0");
    ++tally.results.at(static_cast<std::size_t>(reply.result));
    if (reply.result == 0 && reply.id != kId) ++tally.other_ids;
  }
}

void RunProcess(Tally& tally) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back([&] { CallOften(tally); });
  for (std::thread& thread : threads) thread.join();
  _exit(CountLiveObjects() == LiveObjects{} ? 0 : 1);
}

// Returns once all have ended, and says what came of it.
Tally& RunProcesses(const ScriptedMachine& machine) {
  void* memory =
      mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  Tally& tally = *new (memory) Tally{};
  for (int process = 0; process < kProcesses; ++process) {
    if (fork() == 0) RunProcess(tally);
  }
  for (int status = 0; wait(&status) > 0;) tally.failures += status != 0 ? 1 : 0;
  std::cout << "result 0: " << tally.results[0] << ", 4: " << tally.results[4]
            << ", other ids: " << tally.other_ids
            << "\ndevice.idv2: " << ReadFileText(machine.Common("device.idv2")) << " and "
            << ReadFileText(machine.User("device.idv2"))
            << "\nbytes of hid_settings: " << ReadFileText(machine.Common("hid_settings")).size()
            << " and " << ReadFileText(machine.User("hid_settings")).size() << "\n";
  EXPECT_EQ(tally.failures, 0);
  EXPECT_EQ(tally.other_ids, 0);
  EXPECT_EQ(tally.results[0] + tally.results[4], kProcesses * kThreads * CallsPerThread());
  return tally;
}

TEST(ManyCallersTest, OnAKnownMachineAllGetTheStoredId) {
  QuietMachine machine;
  const StoredRecord record = {"2.0", kId, 0, machine.ticks / 10'000'000, {"a", "b"}};
  WriteFileText(machine.Common("device.idv2"), kStoredId);
  WriteFileText(machine.Common("hid_settings"), record.Bytes());
  EXPECT_EQ(RunProcesses(machine).results[4], 0);
  EXPECT_EQ(ReadFileText(machine.Common("device.idv2")), kStoredId);
  EXPECT_EQ(ReadFileText(machine.Common("hid_settings")), record.Bytes());
}

TEST(ManyCallersTest, OnACleanMachineNobodyGetsAnythingWorseThanNoId) {
  QuietMachine machine;
  EXPECT_GT(RunProcesses(machine).results[0], 0);
}

}  // namespace
}  // namespace system_info
