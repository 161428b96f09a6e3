// The choice of the one MAC address that represents a machine, as a function of plain data.

#ifndef DEVICEID_HARDWARE_NETWORK_ADAPTERS_H_
#define DEVICEID_HARDWARE_NETWORK_ADAPTERS_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "support/call_log.h"

namespace system_info {

// From adapter name to MAC text.
using AdapterMap = std::map<std::string, std::string>;

// The six bytes at `address` as "00:1a:2b:c3:d4:0f".
std::string FormatMacAddress(const std::uint8_t* address);

// Returns the MAC text of the first of `pci_adapters` if `adapters` has that name, otherwise that
// of `first_adapter_name`, and logs which one. Empty if `adapters` has neither. No kind of adapter
// is filtered out: that would change existing ids.
std::string SelectMacAddress(const AdapterMap& adapters, const std::string& first_adapter_name,
                             const std::vector<std::string>& pci_adapters, HIDLog& log);

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_NETWORK_ADAPTERS_H_
