// The manager of the running machine.
//
// It collects the hardware values through WMI, IP Helper, SetupAPI and the registry, and reads and
// writes the device id files. Its whole state is the shared log. COM is entered and left once per
// collection, on the thread of the call. The readers are grouped by file:
//
//   windows_os_manager.cc        the two collections, within COM
//   wmi_property_reader.cc       the plan of properties and the WMI queries
//   network_adapter_reader.cc    the adapter list and the present PCI adapters
//   storage/device_id_copies.cc  the copies of the device id files

#ifndef DEVICEID_HARDWARE_WINDOWS_OS_MANAGER_H_
#define DEVICEID_HARDWARE_WINDOWS_OS_MANAGER_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hardware/network_adapters.h"
#include "hardware/os_manager.h"
#include "platform/windows_api.h"

namespace system_info {

struct PlannedValue;

class WindowsOSManager final : public OSManager {
 public:
  // Shares `log`. Touches neither COM nor the system.
  explicit WindowsOSManager(const std::shared_ptr<HIDLog>& log) : OSManager(log) {}

  HardwareIdString GetHardwareIdString(const HidFormatVersion& version) override;
  bool ReadCommonDeviceId(std::string& id, const HidFormatVersion& version) override;
  bool ReadUserDeviceId(std::string& id, const HidFormatVersion& version) override;
  bool WriteCommonDeviceId(const std::string& id, const HidFormatVersion& version) override;
  bool WriteUserDeviceId(const std::string& id, const HidFormatVersion& version) override;
  void DeleteUserDeviceId(const HidFormatVersion& version) override;
  HardwareIdSet GetHardwareIdList(const HidFormatVersion& version) override;

 private:
  // Device id files. `path` and `folder` are those of the copy.
  bool ReadDeviceId(const std::string& path, std::string& id);
  bool WriteDeviceId(const std::string& folder, const std::string& path, const std::string& id);

  // The values of `version` joined, or empty if they could not be read.
  std::wstring GetWmiProperties(const HidFormatVersion& version);

  // The four values of the list form, some of them possibly empty, or none if reading failed.
  std::optional<std::vector<std::wstring>> GetWmiPropertiesList(const HidFormatVersion& version);

  // The value of one row of the plan of properties.
  std::wstring ReadPlannedValue(IWbemServices* services, const PlannedValue& planned,
                                const HidFormatVersion& version);

  // The property of the first row that the class text selects, or empty. Failures while it reads
  // are logged, not thrown.
  std::wstring GetWmiProperty(IWbemServices* services, const wchar_t* class_name,
                              const wchar_t* property_name, bool filter_value);
  std::wstring ReadWmiProperty(IWbemServices* services, const wchar_t* class_name,
                               const wchar_t* property_name, bool filter_value);

  std::wstring GetVolumeId(IWbemServices* services, bool filter_value);
  std::wstring GetWmiMacAddress(IWbemServices* services);
  std::wstring GetLegacyWmiMacAddress(IWbemServices* services);

  // The chosen adapter's address, from the adapter list or else from WMI.
  std::wstring GetChosenMacAddress(IWbemServices* services);

  // The address of the chosen adapter, empty if no adapter could be listed.
  std::string GetMacAddress();

  // Fills `adapters` and the name that the system lists first. False if there is no list.
  bool GetNetworkAdapters(AdapterMap& adapters, std::string& first_adapter_name);

  // Appends the instance ids of the present PCI network adapters, in the system's order. False if
  // the devices could not be listed.
  bool GetPciNetworkAdapters(std::vector<std::string>& pci_adapters);
};

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_WINDOWS_OS_MANAGER_H_
