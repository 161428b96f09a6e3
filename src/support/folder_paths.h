// The folders that hold the state of the system.
//
// All paths are the operating system's narrow paths. Every call asks for them again.

#ifndef DEVICEID_SUPPORT_FOLDER_PATHS_H_
#define DEVICEID_SUPPORT_FOLDER_PATHS_H_

#include <string>

namespace system_info {

// The folder of the system that all users of the machine share, and that of the current user. With
// `use_old_name` the folders of older versions. Neither is created. Empty if the operating system
// does not name the parent folder.
std::string CommonFolderPath(bool use_old_name);
std::string UserFolderPath(bool use_old_name);

// The path separator: a backslash, or that of the operating system.
char PathSeparator();

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_FOLDER_PATHS_H_
