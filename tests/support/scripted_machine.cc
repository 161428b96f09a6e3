#include "support/scripted_machine.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "hardware/windows_os_manager.h"
#include "inspection/log_entries.h"
#include "support/foreseen_call.h"

namespace system_info {
namespace {

constexpr const wchar_t* kHardwareAdapter =
    L"Win32_NetworkAdapter WHERE Manufacturer != 'Microsoft' AND NOT PNPDeviceID LIKE 'ROOT%\\\\'";

template <typename... Flags, typename Call>
Reply CallWithBuffers(Call call, const char* version, Flags... flags) {
  char id[64] = "<untouched>";
  std::vector<char> log(1 << 17);
  std::strcpy(log.data(), id);
  Reply reply;
  reply.result = call(id, 64, version, log.data(), 1 << 17, flags...);
  reply.id = id;
  reply.log = log.data();
  return reply;
}

template <typename Collection>
Collection Collect(Collection (OSManager::*collect)(const HidFormatVersion&),
                   HidFormatVersion version, std::string* log_text) {
  const auto log = std::make_shared<HIDLog>();
  WindowsOSManager manager(log);
  Collection collection = (manager.*collect)(version);
  std::vector<char> text(1 << 16);
  log->CopyTo(text.data(), static_cast<std::uint32_t>(text.size()));
  if (log_text != nullptr) *log_text = text.data();
  return collection;
}

class LiveHardware final : public Hardware {
 public:
  explicit LiveHardware(const ScriptedMachine& machine) : machine_(machine) {}

  std::vector<WmiRow> QueryWmi(const std::wstring& class_text) override {
    const auto rows = machine_.wmi.find(class_text);
    return rows == machine_.wmi.end() ? std::vector<WmiRow>() : rows->second;
  }
  std::vector<NetworkAdapter> NetworkAdapters() override { return machine_.adapters; }
  std::vector<PciNetworkDevice> PciNetworkDevices() override { return machine_.pci_devices; }

 private:
  const ScriptedMachine& machine_;
};

}  // namespace

ScriptedMachine::ScriptedMachine() : ticks(1'700'000'000 * kTicksPerSecond) {
  wmi[L"Win32_ComputerSystemProduct"] = {
      {{L"UUID", L"4C4C4544-0042-3510-8052-B4C04F4E3732"}, {L"IdentifyingNumber", L"PF0XYZ"}}};
  wmi[L"Win32_OperatingSystem"] = {{{L"SerialNumber", L"00330-80000-00000-AA123"}}};
  wmi[L"win32_logicaldisk WHERE deviceid=\"C:\""] = {{{L"VolumeSerialNumber", L"1234ABCD"}}};
  wmi[L"Win32_BaseBoard"] = {{{L"SerialNumber", L"BOARD7"}}};
  wmi[L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"] = {
      {{L"MACAddress", L"00:50:56:C0:00:01"}}};
  wmi[kHardwareAdapter] = {{{L"MACAddress", L"00:50:56:C0:00:02"}}};
  adapters = {{"{VPN}", "Tunnel", {0x02, 0, 0, 0, 0, 0x01}},
              {"{NIC}", "Onboard", {0x00, 0x1a, 0x2b, 0xc3, 0xd4, 0x0f}}};
  pci_devices = {{true, "{NIC}", "Gigabit Adapter", "Ethernet Controller"}};

  std::string pattern = (std::filesystem::temp_directory_path() / "deviceid-XXXXXX").string();
  folder_ = mkdtemp(pattern.data());
  common_root = folder_ + "/common";
  user_root = folder_ + "/user";
  std::filesystem::create_directory(*common_root);
  std::filesystem::create_directory(*user_root);
  previous_ = SetPresentMachine(this);

  // Log lines show local time: half an hour keeps minutes from passing for hours.
  setenv("TZ", "TST-05:30", 1);
  tzset();
}

ScriptedMachine::~ScriptedMachine() {
  SetPresentMachine(previous_);
  std::filesystem::remove_all(folder_);
}

void ScriptedMachine::Fail(PlatformCall call, std::uint32_t code, const std::string& subject) {
  failures_.push_back({call, code, subject});
}

void ScriptedMachine::At(PlatformCall call, const std::string& subject,
                         const std::function<void()>& action) {
  on_call = [=](PlatformCall seen, std::string_view about) -> std::optional<std::uint32_t> {
    if (seen == call && about.find(subject) != std::string_view::npos) action();
    return std::nullopt;
  };
}

void ScriptedMachine::LoseHardware() {
  wmi.clear();
  adapters.clear();
  pci_devices.clear();
}

std::vector<std::string> ScriptedMachine::Seen(PlatformCall call) const {
  std::vector<std::string> subjects;
  for (const auto& [seen, subject] : seen_) {
    if (seen == call) subjects.push_back(subject);
  }
  return subjects;
}

std::unique_ptr<Hardware> ScriptedMachine::LookAtHardware() {
  return std::make_unique<LiveHardware>(*this);
}

std::optional<std::uint32_t> ScriptedMachine::FailureOf(PlatformCall call,
                                                        std::string_view subject) {
  seen_.emplace_back(call, subject);
  if (on_call) {
    if (const auto code = on_call(call, subject)) return code;
  }
  for (const Failure& failure : failures_) {
    const bool meant = subject.find(failure.subject) != std::string_view::npos;
    if (failure.call == call && meant) return failure.code;
  }
  return std::nullopt;
}

std::vector<std::string> Reply::Lines() const {
  std::vector<std::string> lines;
  for (const LogEntry& entry : ParseLog(log)) {
    lines.push_back("[" + entry.level + "] " + entry.message);
  }
  return lines;
}

std::ostream& operator<<(std::ostream& out, const Reply& reply) {
  return out << "result " << reply.result << ", id " << reply.id << ", log:\n" << reply.log;
}

Reply GetId(const char* version) { return CallWithBuffers(GetHardwareId, version); }

Reply Recheck(const char* version) { return CallWithBuffers(RecheckHardwareId, version); }

Reply GetIdMod(const char* version, std::uint32_t flags) {
  return CallWithBuffers(GetHardwareIdMod, version, flags);
}

HardwareIdString CollectString(HidFormatVersion version, std::string* log) {
  return Collect(&OSManager::GetHardwareIdString, version, log);
}

HardwareIdSet CollectList(HidFormatVersion version, std::string* log) {
  return Collect(&OSManager::GetHardwareIdList, version, log);
}

std::string Join(const std::vector<std::string>& texts) {
  return std::accumulate(texts.begin(), texts.end(), std::string());
}

std::string StatusText(const std::string& path) {
  struct stat s = {};
  if (lstat(path.c_str(), &s) != 0) return "";
  std::ostringstream text;
  text << std::oct << s.st_mode << std::dec;
  for (const auto number : {s.st_uid, s.st_gid}) text << ' ' << number;
  text << ' ' << s.st_ino << ' ' << s.st_nlink << ' ' << s.st_size;
  for (const auto& [seconds, part] : {s.st_mtim, s.st_ctim}) text << ' ' << seconds << '.' << part;
  return text.str();
}

std::string ReadFileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "<missing>";
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFileText(const std::string& path, const std::string& text) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace system_info
