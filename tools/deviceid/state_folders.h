// The state folders of this machine, or a kept copy of one, as they are given to the inspection.

#ifndef DEVICEID_TOOLS_DEVICEID_STATE_FOLDERS_H_
#define DEVICEID_TOOLS_DEVICEID_STATE_FOLDERS_H_

#include <filesystem>
#include <string>
#include <vector>

#include "inspection/explanation.h"

namespace deviceid {

// The files of a state folder that an id depends on.
struct StoredFileName {
  const char* name;
  system_info::StoredFile system_info::StateFolder::*file;
};
inline constexpr StoredFileName kStoredFiles[] = {
    {"device.idv2", &system_info::StateFolder::idv2},
    {"device.id", &system_info::StateFolder::id},
    {"hid_settings", &system_info::StateFolder::record},
};

// The common folder, then the one of this account.
std::vector<system_info::StateFolder> ReadStateFolders();

// A kept copy, which may stand in a folder of its own name below `path`. Throws Failure if there is
// no such folder, if it cannot be read, or if it holds no stored file.
system_info::StateFolder ReadKeptFolder(const std::filesystem::path& path);

// Of a log or a case file that the user names.
inline constexpr std::size_t kLargestUserFile = std::size_t{64} << 20;

// The bytes of a file that the user named, at most `limit`. Throws Failure if it cannot be read or
// is larger.
std::string ReadUserFile(const std::filesystem::path& path, std::size_t limit);

// One stored file, by the rules of the library's own readers.
system_info::StoredFile ReadStoredFile(const std::filesystem::path& path);

// The local date of a time in seconds since 1 January 1970 UTC: "2026-11-03".
std::string LocalDate(std::int64_t seconds);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_STATE_FOLDERS_H_
