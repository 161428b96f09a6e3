#include "hardware/network_adapters.h"

#include <string_view>

namespace system_info {
namespace {

std::string AddressOf(const AdapterMap& adapters, const std::string& name) {
  const auto entry = adapters.find(name);
  return entry == adapters.end() ? std::string() : entry->second;
}

}  // namespace

std::string FormatMacAddress(const std::uint8_t* address) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (int i = 0; i < 6; ++i) {
    if (i > 0) text += ':';
    text += kDigits[address[i] >> 4];
    text += kDigits[address[i] & 15];
  }
  return text;
}

std::string SelectMacAddress(const AdapterMap& adapters, const std::string& first_adapter_name,
                             const std::vector<std::string>& pci_adapters, HIDLog& log) {
  if (pci_adapters.empty()) {
    log.Write("Cannot find PCI MAC-Address #1. Return first found adapter", LogLevel::Debug);
    return AddressOf(adapters, first_adapter_name);
  }
  const auto chosen = adapters.find(pci_adapters.front());
  if (chosen == adapters.end()) {
    log.Write("Cannot find PCI MAC-Address #2. Return first found adapter", LogLevel::Debug);
    return AddressOf(adapters, first_adapter_name);
  }
  log.Write("Find PCI MAC-Address: " + chosen->second + " for " + chosen->first, LogLevel::Debug);
  return chosen->second;
}

}  // namespace system_info
