// Migrates "device.id" from the folder of older versions, once, so that a machine keeps its
// identity.
//
// The copy is made only while the current folder does not exist. It never deletes: the old folder
// stays as it is.

#ifndef DEVICEID_STORAGE_FOLDER_MIGRATION_H_
#define DEVICEID_STORAGE_FOLDER_MIGRATION_H_

#include <string>

#include "support/call_log.h"

namespace system_info {

// Has to run before any other access of a call to the storage. Migrates the common folder and the
// user folder independently.
void MigrateDeviceIdFolders(HIDLog& log);

// Migrates one folder. The result is only logged.
void CopyDeviceIdFolder(HIDLog& log, const std::string& old_dir, const std::string& new_dir);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_FOLDER_MIGRATION_H_
