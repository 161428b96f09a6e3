// Carries "device.id" over from the folder of older versions, once, so that a machine keeps its
// identity.
//
// The copy is made only while the current folder does not exist. It never deletes: the old folder
// stays as it is.

#ifndef DEVICEID_STORAGE_FOLDER_MIGRATION_H_
#define DEVICEID_STORAGE_FOLDER_MIGRATION_H_

#include <string>

#include "support/call_log.h"

namespace system_info {

// Runs before anything else of a call touches the storage. The common folder and the user folder
// are carried over independently.
void MigrateDeviceIdFolders(HIDLog& log);

// Carries over one folder. What happened shows in the log only.
void CopyDeviceIdFolder(HIDLog& log, const std::string& old_dir, const std::string& new_dir);

}  // namespace system_info

#endif  // DEVICEID_STORAGE_FOLDER_MIGRATION_H_
