// The computer behind the layer.
//
// The layer turns the answers of one Machine into the calls, codes and objects of the platform
// door. Files are real files in either case; a machine only names the folders above them. A machine
// is asked from every thread that calls into the library, so its answers must not depend on one.
// What one look at its hardware found belongs to the thread that looked.

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

// A value whose type in its class is not that of the value itself.
struct MistypedValue {
  std::variant<std::wstring, std::int32_t> value;

  friend bool operator==(const MistypedValue&, const MistypedValue&) = default;
};

// A property of a WMI row: null, a text, or a number.
using WmiValue = std::variant<std::monostate, std::wstring, std::int32_t, MistypedValue>;

// From property name to value. A property without an entry does not exist in the class.
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

// The calls that a machine may make fail. Not part of the real computer's answers: there, what
// fails is what the system refuses.
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
  kWriteFileShort,       // the number of bytes that are written all the same; about the path
  kDeleteFile,           // error code; about the path
  kCreateDirectory,      // error code; about the path
  kLocalTime,            // error code
};

// What one look at the hardware found.
class Hardware {
 public:
  Hardware() = default;
  Hardware(const Hardware&) = delete;
  Hardware& operator=(const Hardware&) = delete;
  virtual ~Hardware() = default;

  // The rows that "SELECT property FROM class_text" finds, each with all properties of its class.
  virtual std::vector<WmiRow> QueryWmi(const std::wstring& class_text) = 0;

  // In the order in which the system lists them.
  virtual std::vector<NetworkAdapter> NetworkAdapters() = 0;
  virtual std::vector<PciNetworkDevice> PciNetworkDevices() = 0;
};

class Machine {
 public:
  Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  virtual ~Machine() = default;

  // Throws if the hardware cannot be looked at now, for lack of descriptors or memory.
  virtual std::unique_ptr<Hardware> LookAtHardware() = 0;

  // The folder whose first character names the system drive.
  virtual std::wstring WindowsFolder() = 0;

  // The folders above those of the system, without a separator at the end. None if there is none.
  virtual std::optional<std::string> CommonRoot() = 0;
  virtual std::optional<std::string> UserRoot() = 0;

  // 100-nanosecond ticks since 1 January 1970 00:00:00 UTC.
  virtual std::int64_t PresentTicks() = 0;

  // Asked as a platform call begins. A value makes the call fail with it.
  virtual std::optional<std::uint32_t> FailureOf(PlatformCall /*call*/,
                                                 std::string_view /*subject*/) {
    return std::nullopt;
  }
};

// The machine that the layer asks: the real computer, unless a test put another one in its place.
Machine& PresentMachine();

// Puts `machine` in place of the present one, or the real computer if it is null, and returns what
// was in its place. Not to be called while a call of the library runs.
Machine* SetPresentMachine(Machine* machine);

// What the layer has handed out and not got back, in this process.
struct LiveObjects {
  int com_objects = 0;
  int com_strings = 0;
  int handles = 0;
  int apartment_entries = 0;
  int looks_at_hardware = 0;
  // Objects that were still alive when their thread left COM for good. Never goes down.
  int objects_after_com = 0;

  friend bool operator==(const LiveObjects&, const LiveObjects&) = default;
};
LiveObjects CountLiveObjects();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_MACHINE_H_
