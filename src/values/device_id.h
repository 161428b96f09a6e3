// The text of a device id: making it from a hardware string, validating a text from a file, and
// changing the format of an id.
//
// An id is an MD5 digest laid out like a GUID, prefixed with the two digits of its last format:
// "2-0-98500190-d23c-b04f-d696-3f7d28e17f72". Ids of format 1.0 have no such digits. All functions
// are pure and may run on any thread.

#ifndef DEVICEID_VALUES_DEVICE_ID_H_
#define DEVICEID_VALUES_DEVICE_ID_H_

#include <cstddef>
#include <string>

#include "values/format_version.h"

namespace system_info {

using DeviceId = std::string;

// Makes the id of `version` from the bytes of `hardware_ids` and nothing else: 40 characters, 36
// for version 1.0, with lower-case digits.
DeviceId MakeDeviceId(const std::string& hardware_ids, HidFormatVersion version);

// Lays out `hex`, the 32 hexadecimal digits of a digest, as the id of `version`.
DeviceId FormatDeviceId(const std::string& hex, HidFormatVersion version);

// Reverses the order of the two-character pairs in [begin, end) of `text`, in place.
void ReverseHexPairs(std::string& text, std::size_t begin, std::size_t end);

// True if all of `text` has the layout of a 40-character id, whatever its two leading digits say.
bool IsValidDeviceId(const std::string& text);

// Returns `device_id` with the leading digits of `version`. An id whose first digit is neither 1
// nor 2 and an id without leading digits come back unchanged.
DeviceId RewriteDeviceIdPrefix(const DeviceId& device_id, HidFormatVersion version);

}  // namespace system_info

#endif  // DEVICEID_VALUES_DEVICE_ID_H_
