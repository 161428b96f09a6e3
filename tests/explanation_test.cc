// What is said about stored files, logs and machines. The files lie on a scripted machine, and all
// logs are those of real calls.

#include "inspection/explanation.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "api/request.h"
#include "hardware/windows_os_manager.h"
#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/hardware_parts.h"
#include "inspection/log_facts.h"
#include "inspection/saved_log.h"
#include "inspection/shown_text.h"
#include "inspection/stored_bytes.h"
#include "storage/hid_settings.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"

namespace system_info {
namespace {

// What the ordinary machine gives, with both disk and board replaced, and an id of nothing.
const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";
const std::string kOtherId = "2-0-0d279e0a-c3c2-393f-256c-e20d6ff74d62";
const std::string kOldId = "2-0-01234567-89ab-cdef-0123-456789abcdef";

std::string Stored(const std::string& id) { return "1-6-" + id.substr(4); }

std::string UtcDay(std::int64_t seconds) { return UtcText(seconds).substr(0, 10); }

StoredFile ReadStored(const std::string& path) {
  StoredFile file;
  const std::string bytes = ReadFileText(path);
  if (bytes == "<missing>") return file;
  file.state = StoredFile::State::kRead;
  file.bytes = bytes;
  return file;
}

class ExplanationTest : public MachineTest {
 protected:
  // Makes a call on a copy of the files, which stay as they are.
  PlayedCall Play(const Request& request) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(*pc.common_root).parent_path();
    const fs::path kept = folder.string() + "-kept";
    fs::copy(folder, kept, fs::copy_options::recursive);
    std::shared_ptr<HIDLog> log;
    Request played = request;
    char id[64] = "";
    char buffer[1];
    played.buffers = {id, 64, buffer, 0};
    PlayedCall call;
    call.result = Answer(played, [&](const std::shared_ptr<HIDLog>& of_call) {
      log = of_call;
      return std::make_unique<WindowsOSManager>(of_call);
    });
    std::vector<char> text(1 << 17);
    if (log != nullptr) log->CopyTo(text.data(), 1 << 17);
    call.log = text.data();
    if (call.result == HidResult::Success) call.id = id;
    const std::string hardware = CollectString(HidFormatVersion(2, 0));
    const bool of_file = call.log.find(Stored(id).substr(4)) < call.log.find("Hardware settings");
    call.random = call.id && hardware.empty() && !of_file;
    fs::remove_all(folder);
    fs::rename(kept, folder);
    return call;
  }

  std::vector<StateFolder> Folders() {
    std::vector<StateFolder> folders;
    for (const bool common : {true, false}) {
      const auto path = [&](const std::string& n) { return common ? pc.Common(n) : pc.User(n); };
      StateFolder folder;
      folder.kind = common ? StateFolder::Kind::kCommon : StateFolder::Kind::kUser;
      folder.path = common ? "/common" : "/user";
      folder.idv2 = ReadStored(path("device.idv2"));
      folder.id = ReadStored(path("device.id"));
      folder.record = ReadStored(path("hid_settings"));
      folders.push_back(folder);
    }
    return folders;
  }

  Explanation Explain(const char* format = "2.0") {
    MachineState machine;
    machine.format = format;
    machine.folders = Folders();
    machine.administrator = administrator;
    machine.next = Play(GetRequest({}, format));
    if (machine.format == "2.0") machine.recheck = Play(RecheckRequest({}, format));
    machine.hardware = CollectList(HidFormatVersion(2, 0), &machine.hardware_log);
    return ExplainMachine(machine);
  }

  bool administrator = true;
};

TEST_F(ExplanationTest, Try) {
  const auto show = [&](const char* title, const char* format = "2.0") {
    const Explanation e = Explain(format);
    std::cout << "=== " << title << " [" << (TextOf(e.verdict) ? TextOf(e.verdict) : "null") << " "
              << e.status << "]\n"
              << ToText(e, {false, UtcDay});
    const Explanation l = ExplainLog(Play(GetRequest({}, format)).log);
    std::cout << "--- log [" << (TextOf(l.verdict) ? TextOf(l.verdict) : "null") << " " << l.status
              << "]\n"
              << ToText(l, {false, UtcDay});
  };

  GetId("2.0");
  const std::string record = ReadFileText(pc.Common("hid_settings"));
  const auto reset = [&] {
    std::filesystem::remove_all(std::filesystem::path(pc.Common("x")).parent_path());
    std::filesystem::remove_all(std::filesystem::path(pc.User("x")).parent_path());
    WriteFileText(pc.Common("hid_settings"), record);
    WriteFileText(pc.Common("device.idv2"), Stored(kId));
  };
  WriteFileText(pc.Common("device.idv2"), Stored(kId) + "\r\n");
  WriteFileText(pc.Common("device.id"), Stored(kOldId));
  show("damaged idv2, older id");
  pc.ticks += 10LL * 86400 * 10'000'000;
  show("damaged idv2, older id, old");
  pc.ticks -= 10LL * 86400 * 10'000'000;
  reset();
  WriteFileText(pc.User("device.idv2"), Stored(kOldId));
  show("different ids");
  reset();
  std::filesystem::remove(pc.Common("device.idv2"));
  show("record without id");
  WriteFileText(pc.Common("device.idv2"), Stored(kId).substr(0, 20));
  show("record with cut id");
  reset();
  WriteFileText(pc.Common("hid_settings"), record.substr(0, 60));
  show("cut record");
  WriteFileText(pc.Common("hid_settings"), StoredRecord::Text("x y"));
  show("fatal record");
  reset();
  pc.Fail(PlatformCall::kCoInitializeEx, 0x80010106);
  show("no com, young");
  pc.ticks += 10LL * 86400 * 10'000'000;
  show("no com, old");
  pc.Recover();
  pc.Set(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", {});
  pc.Set(L"Win32_BaseBoard", L"SerialNumber", {});
  pc.Set(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", L"1234abcd");
  pc.adapters[0].name = "tun0"; pc.adapters[1].name="eth0"; pc.pci_devices[0].instance_id="eth0";
  administrator = false;
  show("ordinary account");
  pc.ticks -= 10LL * 86400 * 10'000'000;
  show("ordinary account, young");
  const StateFolder kept = Folders()[0];
  pc.LoseHardware();
  show("no hardware");
  pc.ticks += 10LL * 86400 * 10'000'000;
  show("no hardware old");
  StateFolder copy = kept; copy.kind = StateFolder::Kind::kCopy; copy.path = "~/copy";
  std::cout << "=== folder\n" << ToText(ExplainFolder(copy), {false, UtcDay});
  copy.record = {};
  std::cout << "=== backup without record\n" << ToText(ExplainFolder(copy), {false, UtcDay});
  Explanation e = Explain();
  StateFolder other = kept; other.idv2.bytes=Stored(kOldId); 
  CompareWithKept(e, Folders(), other);
  std::cout << ToText(e, {true, UtcDay});
}
}

}  // namespace
}  // namespace system_info
