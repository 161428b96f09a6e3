#include "hardware/windows_os_manager.h"

#include <array>
#include <exception>
#include <limits>

#include "hardware/com_resources.h"
#include "hardware/hardware_overlay.h"
#include "hardware/hardware_value_filter.h"
#include "support/text_conversions.h"

namespace system_info {

enum class ValueSource { kWmi, kVolume, kLegacyMac, kChosenMac };

// One value of the plan: the text form reads it for versions in [from, below).
struct PlannedValue {
  ValueSource source;
  const wchar_t* class_name;
  const wchar_t* property_name;
  HidFormatVersion from;
  HidFormatVersion below;
  bool in_list;
};

namespace {

constexpr const wchar_t* kProduct = L"Win32_ComputerSystemProduct";

constexpr HidFormatVersion kFirst(0, 0);
constexpr HidFormatVersion kNoEnd(std::numeric_limits<std::uint32_t>::max(),
                                  std::numeric_limits<std::uint32_t>::max());

// The values in the order in which they are read and joined.
constexpr std::array<PlannedValue, 7> kPropertyPlan = {{
    {ValueSource::kWmi, kProduct, L"UUID", kFirst, {1, 4}, false},
    {ValueSource::kWmi, L"Win32_OperatingSystem", L"SerialNumber", kFirst, {1, 4}, false},
    {ValueSource::kVolume, nullptr, nullptr, kFirst, kNoEnd, true},
    {ValueSource::kWmi, kProduct, L"IdentifyingNumber", kFirst, kNoEnd, true},
    {ValueSource::kWmi, L"Win32_BaseBoard", L"SerialNumber", kFirst, kNoEnd, true},
    {ValueSource::kLegacyMac, nullptr, nullptr, {1, 1}, {1, 5}, false},
    {ValueSource::kChosenMac, nullptr, nullptr, {1, 5}, kNoEnd, true},
}};

constexpr HidFormatVersion kFirstFilteredVolume(1, 2);

// The buffer for the path of the Windows folder, of which only the drive letter is used.
constexpr UINT kWindowsFolderSize = 50;

// The connection to WMI for one run over the plan.
struct WmiConnection {
  ComPtr<IWbemLocator> locator;
  ComPtr<IWbemServices> services;
};

bool ConnectToWmi(HIDLog& log, WmiConnection& connection) {
  auto& [locator, services] = connection;
  if (CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                       reinterpret_cast<void**>(locator.receive())) < 0) {
    log.Write("Failed to create WbemLocator instance", LogLevel::Error);
    return false;
  }
  const Bstr wmi_namespace(L"ROOT\\CIMV2");
  if (locator->ConnectServer(wmi_namespace.get(), nullptr, nullptr, nullptr,
                             WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr,
                             services.receive()) < 0) {
    log.Write("Failed to connect server", LogLevel::Error);
    return false;
  }
  // Security of the process as a whole is left to the host; only this proxy is set.
  if (CoSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                        RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                        EOAC_NONE) < 0) {
    log.Write("Failed to set proxy blanket", LogLevel::Error);
    return false;
  }
  return true;
}

// Returns what `read` returns, or an empty result and a log line if it throws.
template <typename Read>
auto ReadGuarded(HIDLog& log, const char* name, Read read) -> decltype(read()) {
  try {
    return read();
  } catch (const std::exception& failure) {
    log.Write(std::string("Error in ") + name + ": " + failure.what(), LogLevel::Error);
  } catch (...) {
    log.Write(std::string("Unexpected error in ") + name, LogLevel::Error);
  }
  return {};
}

void Tell(const std::wstring& property, const wchar_t* class_name, const std::wstring& text,
          HIDLog& log) {
  log.WriteWide(
      L"WMI property \"" + property + L"\" FOR CLASS \"" + class_name + L"\" = \"" + text + L"\"",
      LogLevel::Debug);
}

void NoteForOverlay(const wchar_t* class_name, const std::wstring& property, BSTR text) {
  HardwareOverlay* overlay = PresentHardwareOverlay();
  if (overlay != nullptr) overlay->NoteWmiText(class_name, property, {text, SysStringLen(text)});
}

// The value of the overlay, if it replaces that of the machine.
std::optional<std::wstring> ReadOverlay(const wchar_t* class_name, const wchar_t* property_name,
                                        bool filter_value, HIDLog& log) {
  HardwareOverlay* overlay = PresentHardwareOverlay();
  if (overlay == nullptr) return std::nullopt;
  const auto text = overlay->WmiText(class_name, property_name);
  if (!text) return std::nullopt;
  std::wstring value = FilterHardwareValue(Bstr(text->c_str()).get(), filter_value);
  Tell(property_name, class_name, value, log);
  return value;
}

}  // namespace

std::wstring WindowsOSManager::GetWmiProperties(const HidFormatVersion& version) {
  WmiConnection connection;
  if (!ConnectToWmi(*log_, connection)) return {};
  return ReadGuarded(*log_, "GetWmiProperties", [&] {
    std::wstring joined;
    for (const PlannedValue& planned : kPropertyPlan) {
      if (version < planned.from || version >= planned.below) continue;
      joined += ReadPlannedValue(connection.services.get(), planned, version);
    }
    return joined;
  });
}

std::optional<std::vector<std::wstring>> WindowsOSManager::GetWmiPropertiesList(
    const HidFormatVersion& version) {
  using Values = std::optional<std::vector<std::wstring>>;
  WmiConnection connection;
  if (!ConnectToWmi(*log_, connection)) return std::nullopt;
  return ReadGuarded(*log_, "GetWmiProperties", [&]() -> Values {
    std::vector<std::wstring> values;
    for (const PlannedValue& planned : kPropertyPlan) {
      if (planned.in_list)
        values.push_back(ReadPlannedValue(connection.services.get(), planned, version));
    }
    return values;
  });
}

std::wstring WindowsOSManager::ReadPlannedValue(IWbemServices* services,
                                                const PlannedValue& planned,
                                                const HidFormatVersion& version) {
  switch (planned.source) {
    case ValueSource::kVolume:
      return GetVolumeId(services, version >= kFirstFilteredVolume);
    case ValueSource::kLegacyMac:
      return GetLegacyWmiMacAddress(services);
    case ValueSource::kChosenMac:
      return GetChosenMacAddress(services);
    case ValueSource::kWmi:
      break;
  }
  return GetWmiProperty(services, planned.class_name, planned.property_name, true);
}

std::wstring WindowsOSManager::GetWmiProperty(IWbemServices* services, const wchar_t* class_name,
                                              const wchar_t* property_name, bool filter_value) {
  return ReadGuarded(*log_, "GetWmiProperty", [&] {
    auto overlaid = ReadOverlay(class_name, property_name, filter_value, *log_);
    if (overlaid) return *std::move(overlaid);
    return ReadWmiProperty(services, class_name, property_name, filter_value);
  });
}

std::wstring WindowsOSManager::ReadWmiProperty(IWbemServices* services, const wchar_t* class_name,
                                               const wchar_t* property_name, bool filter_value) {
  const std::wstring property = property_name;
  const Bstr query((L"SELECT " + property + L" FROM " + class_name).c_str());
  const Bstr language(L"WQL");
  ComPtr<IEnumWbemClassObject> rows;
  if (services->ExecQuery(language.get(), query.get(),
                          WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                          rows.receive()) < 0) {
    log_->Write("Failed to execute query", LogLevel::Error);
    return {};
  }

  ComPtr<IWbemClassObject> row;
  ULONG count = 0;
  if (rows->Next(static_cast<LONG>(WBEM_INFINITE), 1, row.receive(), &count) < 0 && count != 0) {
    log_->Write("Failed to get next query", LogLevel::Error);
    return {};
  }

  // Without a row the holder is empty, and using it raises the exception that ends this one value.
  ScopedVariant value;
  CIMTYPE type = 0;
  if (row->Get(property_name, 0, value.receive(), &type, nullptr) < 0) {
    log_->Write("Failed to get result", LogLevel::Error);
    return {};
  }
  std::wstring text;
  if (type == CIM_STRING && value.is_string()) {
    NoteForOverlay(class_name, property, value.string());
    text = FilterHardwareValue(value.string(), filter_value);
  }
  Tell(property, class_name, text, *log_);
  return text;
}

std::wstring WindowsOSManager::GetVolumeId(IWbemServices* services, bool filter_value) {
  wchar_t folder[kWindowsFolderSize] = {};
  const UINT length = GetWindowsDirectoryW(folder, kWindowsFolderSize);
  // If the folder does not fit, the call returns the required size, and there is no drive letter.
  if (length == 0 || length >= kWindowsFolderSize) {
    log_->Write("Could not get ID of volume HDD", LogLevel::Debug);
    return {};
  }
  const std::wstring class_text =
      std::wstring(L"win32_logicaldisk WHERE deviceid=\"") + folder[0] + L":\"";
  return GetWmiProperty(services, class_text.c_str(), L"VolumeSerialNumber", filter_value);
}

std::wstring WindowsOSManager::GetWmiMacAddress(IWbemServices* services) {
  return GetWmiProperty(services, L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE",
                        L"MACAddress", false);
}

std::wstring WindowsOSManager::GetLegacyWmiMacAddress(IWbemServices* services) {
  return GetWmiProperty(services,
                        L"Win32_NetworkAdapter WHERE Manufacturer != 'Microsoft' AND NOT "
                        L"PNPDeviceID LIKE 'ROOT%\\\\'",
                        L"MACAddress", false);
}

std::wstring WindowsOSManager::GetChosenMacAddress(IWbemServices* services) {
  std::wstring address = ToWide(GetMacAddress());
  return address.empty() ? GetWmiMacAddress(services) : address;
}

}  // namespace system_info
