// Where the state of the system lives, and the small file operations that the rest of the storage
// builds on.
//
// All paths are narrow, as the operating system gave them. They are asked for anew in every call.

#ifndef DEVICEID_STORAGE_STORAGE_PATHS_H_
#define DEVICEID_STORAGE_STORAGE_PATHS_H_

#include <string>

#include "api/format_version.h"

namespace system_info {

// The folder of the system that all users of the machine share, and that of the current user. With
// `use_old_name` the folders of older versions. Neither is created. Empty if the operating system
// does not name the folder above.
std::string CommonFolderPath(bool use_old_name);
std::string UserFolderPath(bool use_old_name);

// One backslash, or what the operating system has in its place.
const std::string& PathSeparator();

// "device.id" for versions below 2.0, "device.idv2" from 2.0 on.
std::string DeviceIdFileName(HidFormatVersion version);

// The two places of the device id file of `version`.
std::string CommonDeviceIdPath(HidFormatVersion version);
std::string UserDeviceIdPath(HidFormatVersion version);

// True for files and folders.
bool PathExists(const std::string& path);

bool IsDirectory(const std::string& path);

// True if the file is gone because of this call.
bool RemoveFile(const std::string& path);

// Creates the folder `path` with all its missing parents. True also if something, a file included,
// is there already. What was created stays when a later step fails.
bool EnsureDirectory(const std::string& path);

// Copies the bytes of `source` to `target`. False if there is no `source`, or if there is a
// `target` and `overwrite` does not allow or the system does not permit its removal. Whether the
// bytes could be read and written is not part of the result.
bool CopyFileContents(const std::string& source, const std::string& target, bool overwrite);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_STORAGE_PATHS_H_
