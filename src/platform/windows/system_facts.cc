#include "platform/system_facts.h"

#include <cpuid.h>

#include <array>

#include "platform/native_paths.h"
#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr const wchar_t* kFirmware = L"HARDWARE\\DESCRIPTION\\System\\BIOS";
constexpr const wchar_t* kVersion = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* kMakerValues[] = {L"SystemManufacturer", L"SystemProductName",
                                           L"BaseBoardManufacturer", L"BIOSVendor"};

constexpr unsigned kFeatureLeaf = 1;
constexpr unsigned kHypervisorBit = 1U << 31;

std::string RegistryText(const wchar_t* key, const wchar_t* name) {
  std::array<wchar_t, 256> text = {};
  DWORD size = sizeof(text) - sizeof(wchar_t);
  if (RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
      ERROR_SUCCESS) {
    return {};
  }
  return ToUtf8(std::wstring(text.data()));
}

std::string Architecture() {
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  return system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_INTEL ? "x86" : "x86_64";
}

std::string HostName() {
  std::array<wchar_t, 256> name = {};
  DWORD size = static_cast<DWORD>(name.size());
  if (GetComputerNameExW(ComputerNameDnsHostname, name.data(), &size) == 0) return {};
  return ToUtf8(std::wstring(name.data()));
}

bool TellsOfHypervisor() {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  return __get_cpuid(kFeatureLeaf, &a, &b, &c, &d) != 0 && (c & kHypervisorBit) != 0;
}

}  // namespace

SystemFacts LookAtSystem() {
  SystemFacts facts;
  facts.name = RegistryText(kVersion, L"ProductName");
  if (facts.name.empty()) facts.name = "Windows";
  facts.release = RegistryText(kVersion, L"CurrentVersion");
  const std::string build = RegistryText(kVersion, L"CurrentBuildNumber");
  if (!build.empty()) facts.release += "." + build;
  facts.architecture = Architecture();
  facts.host = HostName();
  for (const wchar_t* value : kMakerValues) {
    const std::string text = RegistryText(kFirmware, value);
    if (!text.empty()) facts.makers.push_back(text);
  }
  facts.hypervisor = TellsOfHypervisor();
  return facts;
}

}  // namespace system_info
