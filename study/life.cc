#include "study/life.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "hardware/network_adapters.h"
#include "identity/hardware_id_matching.h"

namespace system_info {
namespace {

// Of each kind, at most one event happens in as many days.
constexpr int kStep = 10;
constexpr int kBackupEvery = 180;
constexpr int kDisabledFor = 30;

std::uint64_t Day(int day) { return static_cast<std::uint64_t>(day); }

// A part of format 2.0, as the library counts it: empty if it is not a value.
std::string Counted(const std::string& text) {
  return text == kFilteredPlaceholder || text == "0" ? "" : text;
}

std::string KindOf(const std::string& text) {
  if (Counted(text).empty()) return "none";
  return text == "Default string" || text == "System Serial Number" || text == "None" ? "text"
                                                                                      : "own";
}

std::string_view CauseOf(AdapterKind kind) {
  switch (kind) {
    case AdapterKind::kUsb:
      return "USB adapter";
    case AdapterKind::kDock:
      return "dock";
    case AdapterKind::kVpn:
      return "VPN";
    case AdapterKind::kBluetooth:
      return "Bluetooth";
    case AdapterKind::kVirtualSwitch:
      return "virtual switch";
    default:
      return "";
  }
}

}  // namespace

const std::vector<Life::EventKind>& Life::EventKinds() {
  static const std::vector<EventKind> kKinds = {{"adapter_replaced", &Life::ReplaceAdapter},
                                                {"adapter_disabled", &Life::DisableAdapter},
                                                {"usb_adapter_added", &Life::AddUsbAdapter},
                                                {"virtual_switch_added", &Life::AddVirtualSwitch},
                                                {"drive_failed", &Life::FailDrive},
                                                {"drive_upgraded", &Life::UpgradeDrive},
                                                {"installed_anew", &Life::InstallAnew},
                                                {"image_restored", &Life::RestoreImage},
                                                {"files_restored", &Life::RestoreFiles},
                                                {"account_changed", &Life::ChangeAccount},
                                                {"board_replaced", &Life::ReplaceBoard},
                                                {"firmware_changed_serial", &Life::ChangeFirmware},
                                                {"memory_upgraded", &Life::UpgradeMemory},
                                                {"drive_copied", &Life::CopyDrive},
                                                {"machine_copied", &Life::CopyVirtualMachine},
                                                {"machine_moved", &Life::MoveVirtualMachine},
                                                {"container_started", &Life::StartContainer}};
  return kKinds;
}

Life::Life(const Population& population, int number, PlayedLibrary& library, const Habit& habit)
    : population_(population),
      library_(library),
      habit_(habit),
      draws_(population.draws.For("life", static_cast<std::uint64_t>(number))),
      computer_(MakeComputer(population, number, library)),
      watch_(library, habit),
      born_(0),
      backup_(computer_.drive),
      may_read_serials_(computer_.reads_serials),
      mixed_callers_(!computer_.windows && Happens("mixed_callers", 0)),
      serial_kind_(KindOf(computer_.product.text) + ", " + KindOf(computer_.board.text)) {}

Life::Life(const Life& original, Computer computer, int day)
    : population_(original.population_),
      library_(original.library_),
      habit_(original.habit_),
      draws_(original.draws_.For("copy", Day(day))),
      computer_(std::move(computer)),
      watch_(library_, habit_),
      born_(day),
      backup_(computer_.drive),
      may_read_serials_(computer_.reads_serials),
      mixed_callers_(original.mixed_callers_),
      serial_kind_("copy") {}

bool Life::Happens(const char* share, int day) const {
  return draws_.Share(share, Day(day)) < Number(share);
}

std::uint64_t Life::Bits(const char* what, int day) const { return draws_.Bits(what, Day(day)); }

std::vector<std::pair<int, Life::Event>> Life::DrawEvents() const {
  std::vector<std::pair<int, Event>> events;
  for (const EventKind& kind : EventKinds()) {
    const double chance = 1 - std::exp(-Number(kind.rate) * kStep / kDaysPerYear);
    if (chance == 0) continue;
    for (int day = born_ / kStep * kStep; day < kLastDay; day += kStep) {
      if (draws_.Share(kind.rate, Day(day)) >= chance) continue;
      const int at = day + 1 + static_cast<int>(Bits(kind.rate, day + 1) % (kStep - 1));
      if (at > born_) events.emplace_back(at, kind.happen);
    }
  }
  std::stable_sort(events.begin(), events.end(),
                   [](const auto& one, const auto& other) { return one.first < other.first; });
  return events;
}

void Life::Play(std::vector<Life>& copies) {
  copies_ = &copies;
  Look(born_);
  const auto events = DrawEvents();
  auto event = events.begin();
  for (int day = born_ + 1; day <= kLastDay; ++day) {
    bool due = day % habit_.days == 0 || day == kLastDay;
    for (; event != events.end() && event->first == day; ++event) {
      (this->*event->second)(day);
      due = due || habit_.after_events;
    }
    if (due) Look(day);
    if (day % kBackupEvery == 0) backup_ = computer_.drive;
  }
  copies_ = nullptr;
}

void Life::Look(int day) {
  Settle(day);
  if (day == born_) first_parts_ = Parts();
  watch_.Look(computer_, day);
  if (!loss_ && watch_.course(kFormat20).lost_on == day) loss_ = FindLoss();
}

// What comes and goes: docks, tunnels, adapters that are off, and who asks.
void Life::Settle(int day) {
  for (Adapter& adapter : computer_.adapters) SettleAdapter(adapter, day);
  if (!mixed_callers_) return;
  const bool root = Bits("root asks", day) % 2 == 0;
  computer_.reads_serials = computer_.common_writable = root;
}

void Life::SettleAdapter(Adapter& adapter, int day) {
  if (day >= disabled_until_) adapter.enabled = true;
  switch (adapter.kind) {
    case AdapterKind::kDock:
      adapter.present = Happens("docked", day);
      if (draws_.Share("shared docks") < Number("shared_docks")) {
        adapter.permanent_address = adapter.address = 0x020000000000U + Bits("dock", day) % 20;
      }
      break;
    case AdapterKind::kVpn:
      adapter.present = Happens("vpn_up", day);
      break;
    case AdapterKind::kBluetooth:
      adapter.present = Happens("bluetooth_on", day);
      break;
    case AdapterKind::kBuiltIn:
      if (adapter.name == "wifi" && draws_.Share("draws") < Number("drawn_wifi_address")) {
        adapter.address = Bits("wifi address", day) & 0xfeffffffffffU;
        adapter.cause = "drawn Wi-Fi address";
      }
      break;
    default:
      break;
  }
}

Adapter* Life::BuiltInAdapter(int day) {
  std::vector<Adapter*> found;
  for (Adapter& adapter : computer_.adapters) {
    if (adapter.kind == AdapterKind::kBuiltIn) found.push_back(&adapter);
  }
  return found.empty() ? nullptr : found[Bits("which adapter", day) % found.size()];
}

Adapter& Life::AddAdapter(AdapterKind kind, const char* name, int day) {
  const std::uint64_t bits = Bits(name, day);
  Adapter adapter = MakeAdapter(kind, UniqueText(name, bits), bits);
  adapter.in_front = draws_.Share("in front", bits) < Number("newcomer_first");
  return computer_.adapters.emplace_back(adapter);
}

void Life::ReplaceAdapter(int day) {
  Adapter* adapter = BuiltInAdapter(day);
  if (adapter == nullptr) return;
  adapter->permanent_address = adapter->address = Bits("new adapter", day) & 0xfeffffffffffU;
  adapter->cause = "adapter replaced";
}

void Life::DisableAdapter(int day) {
  Adapter* adapter = BuiltInAdapter(day);
  if (adapter == nullptr) return;
  adapter->enabled = false;
  disabled_until_ = day + kDisabledFor;
}

void Life::AddUsbAdapter(int day) { AddAdapter(AdapterKind::kUsb, "usb", day); }

void Life::AddVirtualSwitch(int day) { AddAdapter(AdapterKind::kVirtualSwitch, "switch", day); }

void Life::FailDrive(int day) { ReplaceDrive(day, "failed_drive_copied"); }

void Life::UpgradeDrive(int day) { ReplaceDrive(day, "old_drive_copied"); }

// What is copied to the new drive keeps the serial number of its volume.
void Life::ReplaceDrive(int day, const char* share_copied) {
  computer_.disk = UniqueText("disk", Bits("disk", day));
  if (!Happens(share_copied, day)) MakeInstallation(day, "new drive, new installation");
}

void Life::InstallAnew(int day) { MakeInstallation(day, "new installation"); }

void Life::MakeInstallation(int day, const char* cause) {
  SystemDrive drive;
  drive.volume = {std::to_string(Bits("volume", day) >> 32), cause};
  drive.machine_id = {UniqueText("id", Bits("machine id", day)), cause};
  drive.system_serial = computer_.windows ? computer_.drive.system_serial : drive.machine_id.text;
  drive.files_lost_by = cause;
  computer_.drive = drive;
}

void Life::RestoreImage(int /*day*/) { computer_.drive = backup_; }

void Life::RestoreFiles(int /*day*/) { computer_.drive.stored = backup_.stored; }

void Life::ChangeAccount(int /*day*/) {
  ++computer_.account;
  if (!computer_.common_writable) computer_.drive.files_lost_by = "another account";
}

// Adapters that are soldered to the board go with it.
void Life::ReplaceBoard(int day) {
  constexpr const char* kCause = "board replaced";
  if (KindOf(computer_.board.text) == "own") {
    computer_.board = {UniqueText("board", Bits("board", day)), kCause};
  }
  for (Adapter& adapter : computer_.adapters) {
    const bool card = adapter.name == "wifi" && !Happens("wifi_soldered", 0);
    if (adapter.kind != AdapterKind::kBuiltIn || card) continue;
    adapter.permanent_address = adapter.address = Bits(adapter.name.c_str(), day) & 0xfeffffffffffU;
    adapter.cause = kCause;
  }
  if (Happens("serial_written_to_new_board", day)) return;
  computer_.system_uuid = UniqueText("uuid", Bits("uuid", day));
  if (KindOf(computer_.product.text) == "own") computer_.product = {kFilteredPlaceholder, kCause};
}

void Life::ChangeFirmware(int day) {
  const std::uint64_t what = Bits("firmware", day);
  Value& value = (what & 1) != 0 ? computer_.product : computer_.board;
  value = {(what & 2) != 0 ? kFilteredPlaceholder : UniqueText("rewritten", what),
           "firmware changed a serial number"};
}

void Life::UpgradeMemory(int day) {
  computer_.memory = UniqueText("upgraded", Bits("memory", day) % 5);
}

// The drive, or what was copied from it, is put into another PC.
void Life::CopyDrive(int day) {
  Computer other = OrdinaryComputer(draws_.For("other PC", Day(day)));
  if (KindOf(computer_.product.text) != "own") other.product = computer_.product;
  if (KindOf(computer_.board.text) != "own") other.board = computer_.board;
  other.drive = computer_.drive;
  other.windows = computer_.windows;
  other.reads_serials = may_read_serials_;
  other.common_writable = computer_.common_writable;
  copies_->push_back(Life(*this, other, day));
}

void Life::CopyVirtualMachine(int day) {
  Computer other = computer_;
  if (!Happens("copy_keeps_identity", day)) {
    const Computer fresh = OrdinaryComputer(draws_.For("other machine", Day(day)));
    other.system_uuid = fresh.system_uuid;
    other.disk = fresh.disk;
    if (KindOf(other.product.text) == "own") other.product = fresh.product;
    if (KindOf(other.board.text) == "own") other.board = fresh.board;
    for (Adapter& adapter : other.adapters) {
      adapter.permanent_address = adapter.address =
          draws_.Bits(adapter.name, Day(day)) & 0xfeffffffffffU;
    }
  }
  copies_->push_back(Life(*this, other, day));
}

void Life::MoveVirtualMachine(int day) {
  computer_.processor = UniqueText("processor", Bits("processor", day) % 30);
  if (!Happens("move_changes_address", day)) return;
  Adapter* adapter = BuiltInAdapter(day);
  if (adapter == nullptr) return;
  adapter->permanent_address = adapter->address = Bits("moved", day) & 0xfeffffffffffU;
  adapter->cause = "virtual machine moved";
}

void Life::StartContainer(int day) {
  constexpr const char* kCause = "container started anew";
  if (Happens("container_changes_host", day)) {
    PutOnHost(population_, Bits("host", day), computer_);
    computer_.product.cause = computer_.board.cause = kCause;
  }
  Adapter& adapter = computer_.adapters.at(0);
  DrawContainerAddress(draws_, Day(day), adapter);
  adapter.cause = kCause;
  if (draws_.Share("files on volume") < Number("files_on_volume")) return;
  computer_.drive.stored = {};
  computer_.drive.files_lost_by = kCause;
}

// The choice itself is the library's.
Value Life::NetworkPart() const {
  AdapterMap listed;
  std::string first;
  std::map<std::string, const Adapter*> by_name;
  for (const Adapter* adapter : ListedAdapters(computer_)) {
    if (!computer_.windows && adapter->drawn) continue;
    if (first.empty()) first = adapter->name;
    by_name[adapter->name] = adapter;
    listed[adapter->name] = adapter->name;
  }
  std::vector<std::string> devices;
  for (const Adapter* adapter : PciAdapters(computer_)) devices.push_back(adapter->name);
  HIDLog log;
  const std::string name = SelectMacAddress(listed, first, devices, log);
  if (name.empty()) return {"", "adapter disabled"};
  const Adapter& chosen = *by_name.at(name);
  const bool in_place = devices.empty() || devices.front() == name;
  const std::string_view newcomer = in_place ? CauseOf(chosen.kind) : "adapter disabled";
  const std::uint64_t address = computer_.windows ? chosen.address : chosen.permanent_address;
  return {std::to_string(address), newcomer.empty() ? chosen.cause : newcomer};
}

std::vector<Value> Life::Parts() const {
  const bool readable = computer_.reads_serials;
  const auto serial = [readable](const Value& value) {
    return readable ? Value{Counted(value.text), value.cause} : Value{"", "caller without rights"};
  };
  return {computer_.drive.volume, serial(computer_.product), serial(computer_.board),
          NetworkPart()};
}

Loss Life::FindLoss() const {
  std::set<std::string> causes;
  std::size_t places = 0;
  std::size_t same = 0;
  bool moved = false;
  const std::vector<Value> parts = Parts();
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const Value& first = first_parts_[i];
    if (!first.text.empty()) ++places;
    if (first.text.empty() != parts[i].text.empty()) moved = true;
    if (!first.text.empty() && parts[i].text == first.text) ++same;
    if (parts[i].text == first.text) continue;
    causes.insert(parts[i].cause.empty() ? "adapter disabled" : std::string(parts[i].cause));
  }
  const std::string_view lost_by = computer_.drive.files_lost_by;
  if (!lost_by.empty()) causes.insert(std::string(lost_by));
  // An id that came with the image goes with the first comparison.
  if (causes.empty()) causes.insert("told apart from the image");
  Loss loss;
  for (const std::string& cause : causes) {
    loss.causes += (loss.causes.empty() ? "" : " + ") + cause;
  }
  loss.by_order = lost_by.empty() && moved && same >= RequiredMatches(places);
  return loss;
}

}  // namespace system_info
