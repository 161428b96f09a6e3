// Values in small files of the kernel and the system.
//
// A value that cannot be read counts as missing, with one exception: all functions throw if the
// process or the system is out of resources, since the value may exist then.

#ifndef DEVICEID_PLATFORM_LINUX_VALUE_FILES_H_
#define DEVICEID_PLATFORM_LINUX_VALUE_FILES_H_

#include <fcntl.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/descriptor.h"

namespace system_info {

// `flags` are added to those of a file that is opened for reading. A relative path begins at
// `folder`.
Descriptor OpenToRead(const std::string& path, int flags = 0, int folder = AT_FDCWD);

// The content of the file without its last line end. None if it cannot be read.
std::optional<std::string> ReadValue(const std::string& path, int folder = AT_FDCWD);

// A whole number in base 10, or in base 16 with a leading "0x". None if the file has no number.
std::optional<long> ReadNumber(const std::string& path, int folder = AT_FDCWD);

// The last name in the target of a symbolic link. None if there is no such link.
std::optional<std::string> LinkedName(const std::string& path);

// The path after following all symbolic links. None if it does not exist.
std::optional<std::string> ResolvedPath(const std::string& path);

bool Exists(const std::string& path);

// The names in a folder, unsorted. Empty if it cannot be read.
std::vector<std::string> NamesIn(const std::string& folder);

// The part after the last separator.
std::string LastName(const std::string& path);

// `uuid`, or none if it has only dashes and zeros.
std::optional<std::string> OnlyRealUuid(std::optional<std::string> uuid);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_VALUE_FILES_H_
