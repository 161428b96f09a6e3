// A machine as the rules for ids see it: values, network adapters, and a system drive with files.

#ifndef DEVICEID_STUDY_COMPUTER_H_
#define DEVICEID_STUDY_COMPUTER_H_

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace system_info {

// A value and the event that changed it last; none if it is that of the first day.
struct Value {
  std::string text;
  std::string_view cause;
};

enum class AdapterKind { kBuiltIn, kUsb, kDock, kVpn, kBluetooth, kVirtualSwitch, kContainer };

struct Adapter {
  std::string name;
  AdapterKind kind = AdapterKind::kBuiltIn;
  std::uint64_t permanent_address = 0;
  std::uint64_t address = 0;  // The one in use.
  bool on_pci = false;
  bool in_front = false;   // Before those that were there earlier, in lists of the system.
  bool present = true;     // As a device.
  bool enabled = true;     // Disabled adapters are present and have no address.
  bool drawn = false;      // The kernel drew the address at random and says so.
  std::string_view cause;  // What changed the address last.
};

// Path and content of the files that the library stores.
using StoredFiles = std::map<std::string, std::string>;

// What is copied, imaged, restored and lost as a whole.
struct SystemDrive {
  Value volume;
  Value machine_id;
  std::string system_serial;
  // Of formats 1.6 and 2.0: hosts of both on one machine would share them.
  std::array<StoredFiles, 2> stored;
  std::string_view files_lost_by;
};

struct Computer {
  bool windows = true;
  bool reads_serials = true;    // Linux shows them to root alone.
  bool common_writable = true;  // Otherwise each account has files of its own.
  int account = 0;

  std::string system_uuid;
  Value product;
  Value board;
  std::string disk;
  std::string processor;
  std::string memory;
  SystemDrive drive;
  std::vector<Adapter> adapters;  // In the order in which they came.
  bool last_pci_first = false;    // The enumeration of PCI devices begins at the other end.
};

// Those that the system lists, in its order.
inline std::vector<const Adapter*> ListedAdapters(const Computer& computer) {
  std::vector<const Adapter*> listed;
  for (const Adapter& adapter : computer.adapters) {
    if (!adapter.present || !adapter.enabled) continue;
    listed.insert(adapter.in_front ? listed.begin() : listed.end(), &adapter);
  }
  return listed;
}

// The present PCI adapters, disabled ones included, in the order of the devices.
inline std::vector<const Adapter*> PciAdapters(const Computer& computer) {
  std::vector<const Adapter*> devices;
  for (const Adapter& adapter : computer.adapters) {
    if (!adapter.present || !adapter.on_pci) continue;
    const bool first =
        adapter.kind == AdapterKind::kBuiltIn ? computer.last_pci_first : adapter.in_front;
    devices.insert(first ? devices.begin() : devices.end(), &adapter);
  }
  return devices;
}

}  // namespace system_info

#endif  // DEVICEID_STUDY_COMPUTER_H_
