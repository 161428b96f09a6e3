// The computer behind the layer.
//
// The layer turns the answers of one Machine into the calls, codes and objects of the Windows API.
// Files are always real files; a machine only names their parent folders. Every thread that calls
// the library asks the machine, so its answers must not depend on the thread. A hardware snapshot
// belongs to the thread that took it.

#ifndef DEVICEID_PLATFORM_LINUX_MACHINE_H_
#define DEVICEID_PLATFORM_LINUX_MACHINE_H_

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace system_info {

// A value whose type differs from the type that its class declares.
struct MistypedValue {
  std::variant<std::wstring, std::int32_t> value;

  friend bool operator==(const MistypedValue&, const MistypedValue&) = default;
};

// A property of a WMI row: null, a text, or a number.
using WmiValue = std::variant<std::monostate, std::wstring, std::int32_t, MistypedValue>;

// Maps property names to values. A property without an entry does not exist in the class.
using WmiRow = std::map<std::wstring, WmiValue>;

struct NetworkAdapter {
  std::string name;
  std::string description;
  std::array<std::uint8_t, 6> address;
};

struct PciNetworkDevice {
  // False for a device whose driver has no key in the registry.
  bool has_driver_key = true;
  std::optional<std::string> instance_id;
  std::optional<std::string> friendly_name;
  std::optional<std::string> description;
};

// The calls that a scripted machine can make fail. On the real computer only the system makes calls
// fail.
enum class PlatformCall {
  kCoInitializeEx,       // HRESULT
  kCoCreateInstance,     // HRESULT
  kConnectServer,        // HRESULT
  kCoSetProxyBlanket,    // HRESULT
  kExecQuery,            // HRESULT; about the class text
  kNext,                 // HRESULT; about the class text; the count is that of the rows there are
  kGet,                  // HRESULT; about the property
  kSysAllocString,       // any; about the text
  kGetWindowsDirectory,  // the length that is returned in place of the folder's
  kGetAdaptersInfo,      // error code
  kSetupDiGetClassDevs,  // error code
  kCreateFile,           // error code; about the path
  kReadFile,             // error code; about the path
  kWriteFile,            // error code; about the path
  kWriteStream,          // any
  kWriteFileShort,       // the number of bytes that are still written; about the path
  kDeleteFile,           // error code; about the path
  kCreateDirectory,      // error code; about the path
  kLocalTime,            // error code
};

// A snapshot of the hardware.
class Hardware {
 public:
  Hardware() = default;
  Hardware(const Hardware&) = delete;
  Hardware& operator=(const Hardware&) = delete;
  virtual ~Hardware() = default;

  // The rows that "SELECT property FROM class_text" finds, each with all properties of its class.
  virtual std::vector<WmiRow> QueryWmi(const std::wstring& class_text) = 0;

  // The adapters in the system's order.
  virtual std::vector<NetworkAdapter> NetworkAdapters() = 0;
  virtual std::vector<PciNetworkDevice> PciNetworkDevices() = 0;
};

class Machine {
 public:
  Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  virtual ~Machine() = default;

  // Throws if the hardware cannot be read now, for lack of descriptors or memory.
  virtual std::unique_ptr<Hardware> LookAtHardware() = 0;

  // The folder whose first character names the system drive.
  virtual std::wstring WindowsFolder() = 0;

  // The parents of the library's folders, without a trailing separator. None if there is none.
  virtual std::optional<std::string> CommonRoot() = 0;
  virtual std::optional<std::string> UserRoot() = 0;

  // 100-nanosecond ticks since 1 January 1970 00:00:00 UTC.
  virtual std::int64_t PresentTicks() = 0;

  // Called at the start of a platform call. If there is a value, the call fails with it.
  virtual std::optional<std::uint32_t> FailureOf(PlatformCall /*call*/,
                                                 std::string_view /*subject*/) {
    return std::nullopt;
  }
};

// The machine that the layer uses: the real computer, unless a test replaced it.
Machine& PresentMachine();

// Replaces the machine by `machine`, or by the real computer if that is null, and returns the
// previous one. Do not call this during a call of the library.
Machine* SetPresentMachine(Machine* machine);

// The objects of this process that the layer returned and the caller has not released.
struct LiveObjects {
  int com_objects = 0;
  int com_strings = 0;
  int handles = 0;
  int apartment_entries = 0;
  int looks_at_hardware = 0;
  // Objects that were still alive when their thread left COM for good. Never decreases.
  int objects_after_com = 0;

  friend bool operator==(const LiveObjects&, const LiveObjects&) = default;
};
LiveObjects CountLiveObjects();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_MACHINE_H_
