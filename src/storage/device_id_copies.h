// The paths of the two copies of a device id file. The members of WindowsOSManager that read, write
// and delete the copies are in the source file of this header.

#ifndef DEVICEID_STORAGE_DEVICE_ID_COPIES_H_
#define DEVICEID_STORAGE_DEVICE_ID_COPIES_H_

#include <string>

#include "values/format_version.h"

namespace system_info {

// "device.id" for versions below 2.0, "device.idv2" from 2.0 on.
std::string DeviceIdFileName(HidFormatVersion version);

// The file of `version` in the common folder and in the user folder.
std::string CommonDeviceIdPath(HidFormatVersion version);
std::string UserDeviceIdPath(HidFormatVersion version);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_DEVICE_ID_COPIES_H_
