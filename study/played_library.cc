#include "study/played_library.h"

#include <cstring>
#include <random>

#include "deviceid.h"

namespace {

// Of the numbers that the library draws in a run; set by the first one.
std::uint32_t drawn = 0;

}  // namespace

// Stands in for the system's random numbers, so that a run can be repeated. The linker puts it in
// the place of std::random_device::_M_getval.
extern "C" unsigned int __wrap__ZNSt13random_device9_M_getvalEv(void* /*device*/) {
  return ++drawn;
}

namespace system_info {
namespace {

constexpr std::int64_t kFirstDay = 19'000;
constexpr std::int64_t kTicksPerDay = 86'400LL * 10'000'000;

WmiValue Shown(const std::string& text, bool readable = true) {
  if (text.empty() || !readable) return {};
  return std::wstring(text.begin(), text.end());
}

class ShownHardware final : public Hardware {
 public:
  explicit ShownHardware(const Computer& computer) : computer_(computer) {}

  std::vector<WmiRow> QueryWmi(const std::wstring& class_text) override {
    const bool readable = computer_.reads_serials;
    if (class_text == L"Win32_ComputerSystemProduct") {
      return {{{L"UUID", Shown(computer_.system_uuid, readable)},
               {L"IdentifyingNumber", Shown(computer_.product.text, readable)}}};
    }
    if (class_text == L"Win32_BaseBoard") {
      return {{{L"SerialNumber", Shown(computer_.board.text, readable)}}};
    }
    if (class_text == L"Win32_OperatingSystem") {
      return {{{L"SerialNumber", Shown(computer_.drive.system_serial)}}};
    }
    if (class_text.starts_with(L"win32_logicaldisk")) {
      return {{{L"VolumeSerialNumber", Shown(computer_.drive.volume.text)}}};
    }
    return class_text.starts_with(L"Win32_NetworkAdapter ") ? HardwareAdapters()
                                                            : std::vector<WmiRow>();
  }

  std::vector<NetworkAdapter> NetworkAdapters() override {
    std::vector<NetworkAdapter> adapters;
    for (const Adapter* adapter : ListedAdapters(computer_)) {
      if (!Hidden(*adapter)) adapters.push_back({adapter->name, "", Bytes(ShownAddress(*adapter))});
    }
    return adapters;
  }

  std::vector<PciNetworkDevice> PciNetworkDevices() override {
    std::vector<PciNetworkDevice> devices;
    for (const Adapter* adapter : PciAdapters(computer_)) {
      devices.push_back({true, adapter->name, "", ""});
    }
    return devices;
  }

 private:
  // Linux shows the permanent address of hardware, and none that the kernel drew.
  bool Hidden(const Adapter& adapter) const { return !computer_.windows && adapter.drawn; }
  std::uint64_t ShownAddress(const Adapter& adapter) const {
    return computer_.windows ? adapter.address : adapter.permanent_address;
  }

  static std::array<std::uint8_t, 6> Bytes(std::uint64_t address) {
    std::array<std::uint8_t, 6> bytes;
    for (std::size_t i = 0; i < 6; ++i) {
      bytes.at(5 - i) = static_cast<std::uint8_t>(address >> (8 * i));
    }
    return bytes;
  }

  // In the order in which they came, without those that are made of software.
  std::vector<WmiRow> HardwareAdapters() const {
    for (const Adapter& adapter : computer_.adapters) {
      const bool software =
          adapter.kind == AdapterKind::kVpn || adapter.kind == AdapterKind::kVirtualSwitch;
      if (software || !adapter.present || Hidden(adapter)) continue;
      if (!adapter.enabled) return {{{L"MACAddress", {}}}};
      std::wstring text;
      for (const std::uint8_t byte : Bytes(ShownAddress(adapter))) {
        constexpr const wchar_t* kDigits = L"0123456789ABCDEF";
        if (!text.empty()) text += L':';
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
      }
      return {{{L"MACAddress", text}}};
    }
    return {};
  }

  const Computer& computer_;
};

}  // namespace

PlayedLibrary::PlayedLibrary()
    : previous_machine_(SetPresentMachine(this)), previous_files_(SetFileOverlay(&files_)) {
  drawn = 0;
}

PlayedLibrary::~PlayedLibrary() {
  SetFileOverlay(previous_files_);
  SetPresentMachine(previous_machine_);
}

std::string PlayedLibrary::GetId(Computer& computer, const char* format, int day, bool recheck) {
  computer_ = &computer;
  day_ = day;
  ++calls_;
  StoredFiles none;
  StoredFiles* stored = &none;
  if (std::strcmp(format, "1.6") == 0) stored = &computer.drive.stored[0];
  if (std::strcmp(format, "2.0") == 0) stored = &computer.drive.stored[1];
  files_.Use(*stored, computer.common_writable ? "" : "/common");
  char id[DEVICEID_ID_SIZE] = "";
  const auto call = recheck ? RecheckHardwareId : GetHardwareId;
  return call(id, sizeof(id), format, nullptr, 0) == DEVICEID_SUCCESS ? id : "";
}

std::unique_ptr<Hardware> PlayedLibrary::LookAtHardware() {
  return std::make_unique<ShownHardware>(*computer_);
}

std::optional<std::string> PlayedLibrary::UserRoot() {
  return "/home/" + std::to_string(computer_->account);
}

std::int64_t PlayedLibrary::PresentTicks() { return (kFirstDay + day_) * kTicksPerDay; }

}  // namespace system_info
