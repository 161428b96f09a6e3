// A computer as a plain description, with a switch for every failure that a platform call can have,
// and the calls of a host on it.

#ifndef DEVICEID_TESTS_SUPPORT_SCRIPTED_MACHINE_H_
#define DEVICEID_TESTS_SUPPORT_SCRIPTED_MACHINE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "deviceid.h"
#include "hardware/os_manager.h"
#include "platform/linux/machine.h"
#include "support/clock.h"

namespace system_info {

// An ordinary PC with folders of its own below a temporary folder. It is the present machine from
// its construction to its destruction, then the one before it is again.
class ScriptedMachine : public Machine {
 public:
  ScriptedMachine();
  ~ScriptedMachine() override;

  // From class text to rows; a class text that is not here has no rows.
  std::map<std::wstring, std::vector<WmiRow>> wmi;
  std::vector<NetworkAdapter> adapters;
  std::vector<PciNetworkDevice> pci_devices;
  std::wstring windows_folder = L"C:\\Windows";
  std::optional<std::string> common_root;
  std::optional<std::string> user_root;
  std::int64_t ticks;

  // Sees every platform call that can fail; a value makes it fail. It may also throw.
  std::function<std::optional<std::uint32_t>(PlatformCall, std::string_view)> on_call;

  // Makes `call` fail with `code` from now on, where its subject holds `subject`.
  void Fail(PlatformCall call, std::uint32_t code, const std::string& subject = "");
  void Recover() { failures_.clear(); }

  void PassDays(std::int64_t days) { ticks += days * 86'400 * kTicksPerSecond; }

  // Runs `action`, and nothing else any more, as `call` begins, where its subject holds `subject`.
  void At(PlatformCall call, const std::string& subject, const std::function<void()>& action);

  // No hardware value can be read any more.
  void LoseHardware();

  // Sets the value of a property of the first row of a class.
  void Set(const wchar_t* class_text, const wchar_t* property, const WmiValue& value) {
    wmi[class_text].at(0)[property] = value;
  }

  // The temporary folder.
  const std::string& folder() const { return folder_; }

  // Paths below "BrindleQuayWorks", or below the old folder.
  std::string Common(const std::string& n) const {
    return folder_ + "/common/BrindleQuayWorks/" + n;
  }
  std::string User(const std::string& n) const { return folder_ + "/user/BrindleQuayWorks/" + n; }
  std::string OldCommon(const std::string& n) const { return folder_ + "/common/Fennel/" + n; }
  std::string OldUser(const std::string& n) const { return folder_ + "/user/Fennel/" + n; }

  // The calls that the library made, each as its subject, in order.
  std::vector<std::string> Seen(PlatformCall call) const;

  // Answers with what the members say when it is asked.
  std::unique_ptr<Hardware> LookAtHardware() override;
  std::wstring WindowsFolder() override { return windows_folder; }
  std::optional<std::string> CommonRoot() override { return common_root; }
  std::optional<std::string> UserRoot() override { return user_root; }
  std::int64_t PresentTicks() override { return ticks; }
  std::optional<std::uint32_t> FailureOf(PlatformCall call, std::string_view subject) override;

 private:
  struct Failure {
    PlatformCall call;
    std::uint32_t code;
    std::string subject;
  };

  Machine* previous_;
  std::string folder_;
  std::vector<Failure> failures_;
  std::vector<std::pair<PlatformCall, std::string>> seen_;
};

// What a host got back.
struct Reply {
  int result = -1;
  std::string id;   // "<untouched>" if the buffer is.
  std::string log;  // Likewise.

  // The entries without their times: "[Debug] Execute GetHardwareId, version 1.5".
  std::vector<std::string> Lines() const;
};
std::ostream& operator<<(std::ostream& out, const Reply& reply);

Reply GetId(const char* version);
Reply Recheck(const char* version);
Reply GetIdMod(const char* version, std::uint32_t flags);

// What the library's manager collects on the present machine, and the log of it.
HardwareIdString CollectString(HidFormatVersion version, std::string* log = nullptr);
HardwareIdSet CollectList(HidFormatVersion version, std::string* log = nullptr);

// The texts with nothing between them.
std::string Join(const std::vector<std::string>& texts);

// The whole file, or "<missing>".
std::string ReadFileText(const std::string& path);
// Makes the folders above it, too.
void WriteFileText(const std::string& path, const std::string& text);

// Ends by asking that nothing of the platform is left over.
class MachineTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(CountLiveObjects() == LiveObjects{}); }

  ScriptedMachine pc;
};

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_SCRIPTED_MACHINE_H_
