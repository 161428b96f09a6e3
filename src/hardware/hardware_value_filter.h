// Distinguishes placeholder texts from real hardware values.

#ifndef DEVICEID_HARDWARE_HARDWARE_VALUE_FILTER_H_
#define DEVICEID_HARDWARE_HARDWARE_VALUE_FILTER_H_

#include <string>

#include "platform/windows_api.h"

namespace system_info {

// Returns `value` in lower case, all of its counted characters, or an empty text if `filter_value`
// is set and it is one of the three known placeholders.
std::wstring FilterHardwareValue(BSTR value, bool filter_value);

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_HARDWARE_VALUE_FILTER_H_
