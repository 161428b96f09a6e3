// The folders that hold the state of the system.
//
// All paths are narrow, as the operating system gave them. They are asked for anew in every call.

#ifndef DEVICEID_SUPPORT_FOLDER_PATHS_H_
#define DEVICEID_SUPPORT_FOLDER_PATHS_H_

#include <string>

namespace system_info {

// The folder of the system that all users of the machine share, and that of the current user. With
// `use_old_name` the folders of older versions. Neither is created. Empty if the operating system
// does not name the folder above.
std::string CommonFolderPath(bool use_old_name);
std::string UserFolderPath(bool use_old_name);

// A backslash, or what the operating system has in its place.
char PathSeparator();

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_FOLDER_PATHS_H_
