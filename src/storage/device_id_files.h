// The policy between the two copies of a device id file.
//
// The copy in the common folder takes precedence. The copy in the user folder replaces it while the
// common folder cannot be written, and moves there as soon as possible.

#ifndef DEVICEID_STORAGE_DEVICE_ID_FILES_H_
#define DEVICEID_STORAGE_DEVICE_ID_FILES_H_

#include <string>

#include "hardware/os_manager.h"
#include "support/call_log.h"
#include "values/format_version.h"

namespace system_info {

// Reads the stored id of `version` into `id`. True if a copy was found and holds a well-formed id.
// On false `id` holds the text that was found, if any, or is untouched.
bool LoadDeviceId(OSManager& manager, HIDLog& log, std::string& id,
                  const HidFormatVersion& version);

// Stores `id` for `version`, in the user folder if writing to the common one fails. A failure is
// only logged: an id that could not be stored is still the id of the call.
void SaveDeviceId(OSManager& manager, HIDLog& log, const std::string& id,
                  const HidFormatVersion& version);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_DEVICE_ID_FILES_H_
