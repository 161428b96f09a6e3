// Makes up machines, has the program look at each, and makes the calls: what "explain --json" says
// of the next call and of a recheck has to be what comes of them, and a call that is played has to
// leave what it then leaves. Each call finds the machine made anew. Looking at it leaves no trace.
//
//   random_machines [--count N] [--seed N] [--only simulate]
//
// What differs is told with the seed of its machine, which that seed alone plays again.

#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <linux/fs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <sstream>

#include "hardware/network_adapters.h"
#include "inspection/explanation.h"
#include "inspection/explanation_json.h"
#include "inspection/shown_text.h"
#include "platform/accounts.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/linux_folders.h"
#include "support/foreseen_call.h"
#include "support/scripted_machine.h"
#include "support/stored_record.h"
#include "tools/deviceid/command_line.h"
#include "tools/deviceid/explain_command.h"
#include "tools/deviceid/inspect_command.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/simulate_command.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using namespace std::string_literals;

constexpr uid_t kNobody = 65534;
constexpr uid_t kSomebodyElse = 4711;

const std::string kId = "2-0-e605da79-8246-9201-b359-b533fafc9984";
const std::string kOtherId = "1-6-01234567-89ab-cdef-0123-456789abcdef";
// Somebody took the log of a call for its id.
const std::string kLog =
    "[09:05:03:042] [Debug] Execute GetHardwareId, version 2.0\n"
    "[09:05:03:042] [Info]  Trying to get device.idv2.\n"
    "[09:05:03:042] [Info]  HID was loaded from common file: " +
    kOtherId +
    "\n[09:05:03:042] [Info]  device.idv2 is correct.\n"
    "[09:05:03:042] [Info]  Hardware settings are successfully read.\n";
const std::string kUpperId = "9-5-ABCDEF01-2345-6789-ABCD-EF0123456789";

enum class Account { kRoot, kPowerless, kOrdinary };

// One machine, made up of the draws of one seed.
class RandomMachine : public ScriptedMachine {
 public:
  explicit RandomMachine(unsigned seed) : draw_(seed) {
    chmod(folder().c_str(), 0755);
    account_ = Pick<Account>(
        {Account::kRoot, Account::kOrdinary, Account::kOrdinary, Account::kPowerless});
    MakeFile(folder() + "/elsewhere");
    fs::create_directory(folder() + "/aside");
    Settle(folder() + "/aside", true);
    MakeRoots();
    MakeHardware();
    if (OneIn(8)) MakeTrouble();
    mask_ = Pick<mode_t>({022, 022, 022, 002, 077, 0777, 0377});
  }

  ~RandomMachine() override {
    for (const std::string& mounted : mounted_) umount2(mounted.c_str(), MNT_DETACH);
    for (const std::string& file : fixed_) SetFlags(file, 0);
  }

  std::optional<std::string> UserRoot() override {
    if (!by_environment_) return user_root;
    const auto root = FindUserRoot();
    // The home of the account itself is not to be touched.
    return root && root->starts_with(folder()) ? root : user_root;
  }

  // Runs `action` as the account of the machine.
  void Act(const std::function<void()>& action) {
    const mode_t mask = umask(mask_);
    if (account_ == Account::kOrdinary && (setegid(kNobody) | seteuid(kNobody)) != 0) abort();
    if (account_ == Account::kPowerless) SetPowers(false);
    action();
    if (account_ == Account::kPowerless) SetPowers(true);
    if (account_ == Account::kOrdinary && (seteuid(0) | setegid(0)) != 0) abort();
    umask(mask);
  }

  // What simulate is asked for.
  std::vector<std::string> DrawChanges() {
    std::vector<std::string> words = {
        "--format=" + Pick<std::string>({"2.0", "2.0", "2.0", "2.0", "1.6", "1.5", "1.4", "1.0"})};
    std::vector<std::string> parts = {"volume", "product", "board", "network"};
    // What an account cannot read is empty, also where the reading fails.
    if (OneIn(8) && !failing_) words.emplace_back("account=ordinary");
    if (OneIn(8)) parts = {"volume", "network"};
    for (const std::string& part : parts) {
      // A value that fails to be read does so on the machine that really has another one, too.
      const std::string value = part == "network" ? "02:AB:00:00:00:01" : "Drawn " + part;
      const std::string kind = Pick<std::string>({"replace=", "gone=", "new="});
      if (!OneIn(3) || (kind == "new=" && failing_)) continue;
      words.push_back(kind + part + (kind == "new=" ? ":" + value : ""));
    }
    if (OneIn(3)) words.push_back("days=" + Pick<std::string>({"1", "9", "10", "11", "400"}));
    const bool can_restore = fixed_.empty() && mounted_.empty() && (mask_ & 0600) == 0;
    if (OneIn(4) && can_restore) words.push_back("restore=" + DrawKeptFolder());
    return words;
  }

  // Makes a change that simulate told of. `values` are those in its text.
  void Change(const std::string& change, const std::vector<std::string>& values) {
    const std::string kind = change.substr(0, change.find('='));
    const std::string what = change.substr(kind.size() + 1);
    const std::string part = what.substr(0, what.find(':'));
    const std::string present = kind == "gone" || values.empty() ? "" : values[0];
    if (kind == "days") ticks += std::stol(what) * 86400 * 10'000'000;
    if (kind == "restore") return Restore(what, values.at(0));
    if (kind == "account") {
      for (const char* name : {"product", "board"}) SetPart(name, "");
      if (FindPrivilegedValues().uuid) SetValue(L"Win32_ComputerSystemProduct", L"UUID", "");
    } else if (part == "network") {
      SetAddress(present, values.back());
    } else if (kind != "days") {
      SetPart(part, present);
    }
  }

  ForeseenCall DrawCall() {
    using enum PlayedExport;
    return Pick<ForeseenCall>({{kGet, "1.6", 0},
                               {kGet, "1.6", 0},
                               {kGet, "1.5", 0},
                               {kGet, "1.0", 0},
                               {kRecheck, "1.6", 0},
                               {kGet, "9", 0},
                               {kMod, "2.0", static_cast<std::uint32_t>(Below(8))}});
  }

 private:
  std::size_t Below(std::size_t limit) { return draw_() % limit; }
  bool OneIn(std::size_t chances) { return Below(chances) == 0; }
  template <typename Value>
  Value Pick(const std::vector<Value>& values) {
    return values[Below(values.size())];
  }

  static void SetPowers(bool on) {
    static __user_cap_data_struct all[2];
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    if (!on) syscall(SYS_capget, &header, all);
    __user_cap_data_struct sets[2] = {all[0], all[1]};
    if (!on) sets[0].effective = sets[1].effective = 0;
    syscall(SYS_capset, &header, sets);
  }

  void SetFlags(const std::string& path, int flags) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW));
    ioctl(file.get(), FS_IOC_SETFLAGS, &flags);
    if (flags != 0) fixed_.push_back(path);
  }

  // Gives what is there an owner and rights; mostly such that the account can use it.
  void Settle(const std::string& path, bool folder) {
    const uid_t caller = account_ == Account::kOrdinary ? kNobody : 0;
    const uid_t owner = OneIn(3) ? Pick<uid_t>({0, kNobody, kSomebodyElse}) : caller;
    if (lchown(path.c_str(), owner, owner) != 0 || fs::is_symlink(path)) return;
    mode_t mode = folder ? 0755 : 0644;
    if (OneIn(3)) {
      mode = folder ? Pick<mode_t>({0555, 0777, 01777, 0700, 0311, 0444, 0, 01775})
                    : Pick<mode_t>({0444, 0666, 0600, 0200, 0400, 0});
    }
    // What stands in a file that may only be written cannot be foreseen, nor who holds it.
    if (mode == 0200) fs::resize_file(path, 0);
    if (mode != 0200 && OneIn(30) && !folder) Hold(path);
    chmod(path.c_str(), mode);
    if (OneIn(40)) SetFlags(path, Pick<int>({FS_IMMUTABLE_FL, FS_APPEND_FL}));
  }

  std::string DrawContent(const std::string& name) {
    const bool record = name == "hid_settings";
    const std::string good =
        record ? DrawRecord() : Pick<std::string>({kId, kOtherId, "1-6-" + kId.substr(4)});
    // As a record, such texts would begin with the length of hundreds of megabytes.
    if (!record && OneIn(4)) {
      return Pick<std::string>({std::string(70000, '2'), kId.substr(4), "\0\xff"s, kUpperId,
                                "\xef\xbb\xbf" + kId, "PF0XYZ\r\nBOARD7\nx\nx", kLog});
    }
    return Pick<std::string>({good, good, good, good, good, "", good.substr(0, Below(good.size())),
                              good + "\n", good + "\0"s,
                              good + std::string(8191 - good.size(), ' '),
                              good + std::string(9000, 'x'), good + std::string(70000, 'y')});
  }

  std::string DrawRecord() {
    constexpr std::int64_t kDay = 86400;
    StoredRecord record;
    record.version = OneIn(15) ? Pick<std::string>({"", "x", "99999999999.0", "1.6"}) : "2.0";
    record.device_id = Pick<std::string>({kId, kId, "2-0-" + kOtherId.substr(4), ""});
    record.hid_type = Pick<std::int32_t>({0, 0, 0, 1, 7});
    record.date = ticks / 10'000'000 - Pick<std::int64_t>({0, 10 * kDay, 10 * kDay - 1, 40 * kDay,
                                                           40 * kDay, -5 * kDay});
    record.ids = {"1234abcd", "pf0xyz", "board7", "00:1a:2b:c3:d4:0f"};
    for (std::string& id : record.ids) {
      if (OneIn(4)) id = Pick<std::string>({"changed", "1234abcd", ""});
    }
    record.ids.resize(OneIn(4) ? Below(6) : 4);
    std::string bytes = record.Bytes();
    if (OneIn(30)) bytes.replace(0, 4, "\xff\xff\xff\xff");
    return bytes;
  }

  void MakeFile(const std::string& path) {
    WriteFileText(path, DrawContent(fs::path(path).filename()));
    Settle(path, false);
  }

  // Somebody has the file open with a lock.
  void Hold(const std::string& path) {
    held_.emplace_back(open(path.c_str(), O_RDWR | O_CLOEXEC));
    struct flock lock = {};
    lock.l_type = Pick<short>({F_RDLCK, F_WRLCK});
    fcntl(held_.back().get(), F_OFD_SETLK, &lock);
  }

  void MakeLink(const std::string& path, const std::string& sibling) {
    const std::string target = Pick<std::string>(
        {folder() + "/elsewhere", folder() + "/missing", folder() + "/aside/new", "../../elsewhere",
         sibling, fs::path(path).filename(), folder() + "/aside", folder() + "/no/where"});
    fs::create_symlink(target, path);
    Settle(path, false);
  }

  void MakeStateFile(const std::string& path, const std::string& sibling) {
    switch (Below(12)) {
      case 0:
        MakeLink(path, sibling);
        break;
      case 1:
        if (OneIn(2)) mknod(path.c_str(), Pick<mode_t>({S_IFIFO, S_IFIFO, S_IFSOCK}) | 0666, 0);
        break;
      case 2:
        if (OneIn(2)) fs::create_directory(path);
        break;
      case 3:
      case 4:
      case 5:
      case 6:
        break;
      default:
        MakeFile(path);
    }
  }

  void MakeStateFolder(const std::string& path, const std::string& sibling) {
    if (OneIn(25)) return MakeLink(path, sibling);
    if (OneIn(40)) return MakeFile(path);
    fs::create_directory(path);
    for (const std::string name :
         {"device.id", "device.idv2", "hid_settings", "hardware_ids.emulated"}) {
      MakeStateFile(path + "/" + name, sibling + "/" + name);
    }
    Settle(path, true);
  }

  void MakeRoot(const std::string& root, const std::string& other) {
    for (const std::string name : {"/BrindleQuayWorks", "/Fennel"}) {
      if (!OneIn(name == "/Fennel" ? 2 : 4)) MakeStateFolder(root + name, other + name);
    }
    Settle(root, true);
    if (!OneIn(40)) return;
    mount(root.c_str(), root.c_str(), nullptr, MS_BIND, nullptr);
    mount(nullptr, root.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr);
    mounted_.push_back(root);
  }

  void MakeRoots() {
    MakeRoot(*common_root, *user_root);
    if (OneIn(20)) common_root = folder() + Pick<std::string>({"/new", "/elsewhere", "/missing/x"});
    by_environment_ = OneIn(2);
    const std::string home = *user_root;
    setenv("XDG_DATA_HOME", (OneIn(4) ? home + "/share" : home).c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    if (OneIn(3)) unsetenv("XDG_DATA_HOME");
    std::string root = UserRoot().value_or(home);
    if (!root.starts_with(home + "/")) return;
    const bool missing = OneIn(3);
    if (missing && !by_environment_) user_root = home + Pick<std::string>({"/a", "/a/b", "/a/b/c"});
    if (!missing && OneIn(2)) {
      fs::create_directories(root);
      MakeRoot(root, *common_root);
    }
    if (OneIn(30)) user_root = common_root;
    Settle(home, true);
  }

  void MakeHardware() {
    for (auto& [class_text, rows] : wmi) {
      for (auto& [property, value] : rows[0]) {
        if (OneIn(8)) value = DrawValue();
      }
      if (OneIn(6)) rows.clear();
    }
    if (OneIn(4)) adapters.clear();
    if (OneIn(4)) pci_devices.clear();
    if (OneIn(5)) LoseHardware();
    if (OneIn(4)) FailHardware();
    if (OneIn(16)) At(PlatformCall::kConnectServer, "", [] { throw 7; });
    if (OneIn(16)) At(PlatformCall::kCoInitializeEx, "", [] { throw std::runtime_error("gone"); });
  }

  WmiValue DrawValue() {
    return Pick<WmiValue>({{},
                           7,
                           L"",
                           L"0",
                           L"None",
                           L"To be filled by O.E.M.",
                           L"\u00e4 \n",
                           L"Caf\u00e9 \u0142",
                           L"1234ABCD",
                           std::wstring(5000, L'A')});
  }

  void SetValue(const std::wstring& class_text, const wchar_t* property, const std::string& value) {
    wmi[class_text].resize(std::max<std::size_t>(wmi[class_text].size(), 1));
    wmi[class_text][0][property] = std::wstring(value.begin(), value.end());
  }

  void SetPart(const std::string& part, const std::string& value) {
    if (part == "volume") {
      SetValue(L"win32_logicaldisk WHERE deviceid=\"C:\"", L"VolumeSerialNumber", value);
    } else if (part == "product") {
      SetValue(L"Win32_ComputerSystemProduct", L"IdentifyingNumber", value);
    } else {
      SetValue(L"Win32_BaseBoard", L"SerialNumber", value);
    }
  }

  // Replaces the adapter with the address `former`, or removes all of them.
  void SetAddress(const std::string& address, const std::string& former) {
    if (address.empty()) adapters.clear();
    for (NetworkAdapter& adapter : adapters) {
      if (FormatMacAddress(adapter.address.data()) != former) continue;
      for (std::size_t i = 0; i < adapter.address.size(); ++i) {
        adapter.address[i] =
            static_cast<std::uint8_t>(std::stoul(address.substr(3 * i, 2), nullptr, 16));
      }
    }
    for (const wchar_t* class_text :
         {L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE",
          L"Win32_NetworkAdapter WHERE Manufacturer != 'Microsoft' AND NOT PNPDeviceID LIKE "
          L"'ROOT%\\\\'"}) {
      wmi.erase(class_text);
      if (!address.empty()) SetValue(class_text, L"MACAddress", address);
    }
  }

  std::string DrawKeptFolder() {
    const std::string kept = folder() + "/kept";
    for (const std::string name : {"device.id", "device.idv2", "hid_settings"}) {
      if (!OneIn(4)) WriteFileText(kept + "/" + name, DrawContent(name));
    }
    return kept;
  }

  // Puts the files of `kept` in the place of those in `path`, for the account of the machine.
  void Restore(const std::string& kept, const std::string& path) {
    const uid_t caller = account_ == Account::kOrdinary ? kNobody : 0;
    std::vector<fs::path> missing;
    std::error_code failure;
    for (fs::path at = path; !fs::is_directory(at, failure); at = at.parent_path()) {
      missing.push_back(at);
    }
    for (auto made = missing.rbegin(); made != missing.rend(); ++made) {
      fs::remove(*made);
      mkdir(made->c_str(), 0777 & ~mask_);
      if (lchown(made->c_str(), caller, caller) != 0) abort();
    }
    for (const std::string name : {"/device.id", "/device.idv2", "/hid_settings"}) {
      fs::remove_all(path + name);
      if (!fs::exists(kept + name)) continue;
      fs::copy_file(kept + name, path + name);
      chmod((path + name).c_str(), 0666 & ~mask_);
      if (lchown((path + name).c_str(), caller, caller) != 0) abort();
    }
  }

  void FailHardware() {
    failing_ = true;
    using enum PlatformCall;
    const auto call = Pick<PlatformCall>(
        {kCoInitializeEx, kCoCreateInstance, kConnectServer, kCoSetProxyBlanket, kExecQuery, kNext,
         kGet, kGetWindowsDirectory, kGetAdaptersInfo, kSetupDiGetClassDevs, kSysAllocString});
    const bool of_class = call == kExecQuery || call == kNext;
    const std::string class_text =
        Pick<std::string>({"Win32_BaseBoard", "SystemProduct", "disk", "Adapter", ""});
    Fail(call, call == kGetWindowsDirectory ? 0 : 0x80010106, of_class ? class_text : "");
  }

  void MakeTrouble() {
    using enum PlatformCall;
    Fail(Pick<PlatformCall>(
             {kCreateFile, kReadFile, kWriteFile, kWriteStream, kDeleteFile, kCreateDirectory}),
         10, Pick<std::string>({"", "common", "user", ".idv2"}));
  }

  std::mt19937 draw_;
  bool failing_ = false;
  Account account_;
  mode_t mask_ = 0;
  bool by_environment_ = false;
  std::vector<std::string> fixed_;
  std::vector<std::string> mounted_;
  std::vector<Descriptor> held_;
};

MadeCall Make(const ForeseenCall& call) {
  const char* format = call.format.c_str();
  const Reply reply = call.which == PlayedExport::kMod       ? GetIdMod(format, call.flags)
                      : call.which == PlayedExport::kRecheck ? Recheck(format)
                                                             : GetId(format);
  if (reply.log == "<untouched>") return {reply.result, reply.id, std::nullopt};
  return {reply.result, reply.id, reply.log};
}

// What a command of the program prints.
std::string Printed(const std::vector<std::string>& words) {
  std::ostringstream printed;
  std::streambuf* const standard = std::cout.rdbuf(printed.rdbuf());
  try {
    deviceid::RunCommandLine(
        {{}, deviceid::ExplainCommand(), deviceid::InspectCommand(), deviceid::SimulateCommand()},
        words);
  } catch (const std::exception& failure) {
    printed << failure.what();
  }
  std::cout.rdbuf(standard);
  return printed.str();
}

// Has the program look at the machine; `told` receives what "explain --json" says.
std::string Look(unsigned seed, Json& told) {
  RandomMachine machine(seed);
  std::string faults = TracesOf({machine.folder()}, [&] {
    machine.Act([&] {
      told = Json::parse(Printed({"explain", "--json"}), nullptr, false);
      if (!Json::accept(Printed({"inspect", "--json"}))) told = Json::value_t::discarded;
    });
  });
  if (told.is_discarded()) faults += "no JSON\n";
  std::istringstream lines;
  machine.Act([&] { lines.str(Printed({"explain"}) + Printed({"inspect"})); });
  for (std::string line; std::getline(lines, line);) {
    if (CountCharacters(line) > 80 && !line.starts_with('/')) faults += "too wide: " + line + "\n";
  }
  return faults;
}

// What the log of a call tells otherwise than it came out.
std::string JudgeLog(const PlayedCall& played) {
  const Explanation told = ExplainLog(played.log);
  const bool success = played.result == HidResult::Success;
  const bool same_id = !told.id || told.id == played.id;
  const bool same_end = told.verdict == Verdict::kUndecided || (told.status != 20) == success;
  return same_id && same_end
             ? ""
             : "the log of result " + std::to_string(static_cast<int>(played.result)) + " and id " +
                   played.id.value_or("") + " tells: " + told.sentence + "\n" + played.log;
}

// Plays `call`, or one that is drawn, and makes it. `told` is what was said of it.
std::string TryCall(unsigned seed, const std::optional<ForeseenCall>& wanted, const Json& told) {
  RandomMachine machine(seed);
  const auto hardware = ReadThisMachine();
  // What was read for one call serves the next one.
  const ForeseenCall first = machine.DrawCall();
  const ForeseenCall call = wanted.value_or(machine.DrawCall());
  PlayedCall played;
  machine.Act([&] {
    PlayCall(first.which, first.format, first.flags, *hardware);
    played = PlayCall(call.which, call.format, call.flags, *hardware);
  });
  MadeCall made;
  std::string faults = DifferencesOf(
      call, *hardware, {machine.folder()}, [&] { return made = Make(call); },
      [&](const auto& action) { machine.Act(action); });
  const bool known = made.result == 0 && !played.random;
  const Json outcome = {{"result", made.result},
                        {"id", known ? Json(made.id) : Json(nullptr)},
                        {"random", played.random}};
  if (wanted && told != outcome) faults += "told: " + told.dump() + "\nmade: " + outcome.dump();
  return faults + JudgeLog(played);
}

// The texts in quotation marks, or the folder at the end.
std::vector<std::string> ValuesIn(const std::string& text) {
  static const std::regex kValue("\"([^\"]*)\"|(/.*)$");
  std::vector<std::string> values;
  for (std::sregex_iterator found(text.begin(), text.end(), kValue), end; found != end; ++found) {
    values.push_back((*found)[1].str() + (*found)[2].str());
  }
  return values;
}

// The machine of a seed on which the changes were made that `simulated` tells.
class ChangedMachine : public RandomMachine {
 public:
  ChangedMachine(unsigned seed, const Json& simulated) : RandomMachine(seed) {
    DrawChanges();
    for (const Json& change : simulated["changes"]) {
      const std::string word = change["change"];
      // The folder of each machine has a name of its own.
      const bool kept = word.starts_with("restore=");
      std::vector<std::string> values = ValuesIn(change["text"]);
      if (kept) values = {folder() + values.at(0).substr(folder().size())};
      Change(kept ? "restore=" + folder() + "/kept" : word, values);
      ordinary_ |= word == "account=ordinary";
    }
  }

  // What "explain --json" says of this machine.
  Json Explain(const std::string& format) {
    Json told;
    Act([&] {
      MachineState state = deviceid::LookAtMachine(format, *ReadThisMachine());
      state.administrator &= !ordinary_;
      told = Json::parse(ToJson(ExplainMachine(state)));
    });
    return told;
  }

 private:
  bool ordinary_ = false;
};

// What a call on the changed machine gives otherwise than it was told.
std::string CompareCall(ChangedMachine& machine, const ForeseenCall& call, const Json& told) {
  if (told.is_null()) return "";
  MadeCall made;
  machine.Act([&] { made = Make(call); });
  const bool success = made.result == 0;
  const bool same_id =
      told["random"] ? told["id"].is_null() : told["id"] == (success ? Json(made.id) : Json());
  if (told["result"] == made.result && same_id) return "";
  return "told: " + told.dump() + "\nmade: " + std::to_string(made.result) + " " + made.id + "\n" +
         made.log.value_or("") + "\n";
}

// Each machine has a temporary folder of its own.
std::string WithoutFolder(const Json& told) {
  static const std::regex kFolder("/deviceid-\\w{6}");
  return std::regex_replace(told.dump(), kFolder, "");
}

// What a changed machine is otherwise than it was simulated.
std::string TrySimulation(unsigned seed) {
  Json simulated;
  std::vector<std::string> words;
  std::string faults;
  std::string printed;
  {
    RandomMachine machine(seed);
    words = machine.DrawChanges();
    const std::string format = words[0].substr(words[0].find('=') + 1);
    if (words.size() == 1) return "";
    words.insert(words.begin(), {"simulate", "--json"});
    faults = TracesOf({machine.folder()}, [&] { machine.Act([&] { printed = Printed(words); }); });
    simulated = Json::parse(printed, nullptr, false);
  }
  // There is no such part, or nothing can be read.
  if (simulated.is_discarded()) return faults + (printed.empty() ? "no answer\n" : "");
  const std::string format = words[2].substr(words[2].find('=') + 1);
  Json explained = ChangedMachine(seed, simulated).Explain(format);
  for (const char* name : {"verdict", "sentence", "advice", "situation", "id", "next", "recheck",
                           "parts", "agree", "compared", "needed", "changes_left"}) {
    const std::string told = WithoutFolder(simulated[name]);
    const std::string found = WithoutFolder(explained[name]);
    if (told != found) faults += name + ("\n  told:  " + told) + "\n  found: " + found + "\n";
  }
  ChangedMachine for_next(seed, simulated);
  faults += CompareCall(for_next, {PlayedExport::kGet, format, 0}, simulated["next"]);
  ChangedMachine for_recheck(seed, simulated);
  faults += CompareCall(for_recheck, {PlayedExport::kRecheck, format, 0}, simulated["recheck"]);
  return faults.empty() ? "" : simulated["changes"].dump() + "\n" + faults;
}

std::string TryMachine(unsigned seed, bool only_simulate) {
  using enum PlayedExport;
  Json told;
  std::string faults = TrySimulation(seed);
  if (only_simulate) return faults;
  faults += Look(seed, told);
  if (!faults.empty()) return faults;
  return TryCall(seed, ForeseenCall{kGet, "2.0", 0}, told["next"]) +
         TryCall(seed, ForeseenCall{kRecheck, "2.0", 0}, told["recheck"]) +
         TryCall(seed, std::nullopt, nullptr);
}

// Mounts of this process are its own.
void SetUp() {
  setgroups(0, nullptr);
  if (unshare(CLONE_NEWNS) == 0) mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
}

int Run(unsigned seed, unsigned count, bool only_simulate) {
  SetUp();
  unsigned faults = 0;
  for (unsigned i = 0; i < count; ++i) {
    const std::string differences = TryMachine(seed + i, only_simulate);
    if (differences.empty()) continue;
    ++faults;
    std::cout << "seed " << seed + i << ":\n" << differences << '\n';
  }
  std::cout << count << " machines, " << faults << " faults\n";
  return faults == 0 ? 0 : 1;
}

}  // namespace
}  // namespace system_info

int main(int argc, char** argv) {
  unsigned count = 100;
  unsigned seed = std::random_device()();
  bool only_simulate = false;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    only_simulate |= option == "--only";
    if (option == "--count") count = static_cast<unsigned>(std::stoul(argv[i + 1]));
    if (option == "--seed") seed = static_cast<unsigned>(std::stoul(argv[i + 1]));
  }
  if (geteuid() != 0) {
    std::cout << "only root can give files away\n";
    return 77;
  }
  return system_info::Run(seed, count, only_simulate);
}
