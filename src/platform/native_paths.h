// The texts of paths: as the library builds them, as the system names files, and as people read
// them.

#ifndef DEVICEID_PLATFORM_NATIVE_PATHS_H_
#define DEVICEID_PLATFORM_NATIVE_PATHS_H_

#include <filesystem>
#include <string>

namespace system_info {

// The file that the narrow calls of the system mean by `text`, as in the paths of the library.
std::filesystem::path FromSystemText(const std::string& text);

// The file that a user means by an argument of the program.
std::filesystem::path FromUtf8(const std::string& text);

std::string ToUtf8(const std::filesystem::path& path);
std::string ToUtf8(const std::wstring& text);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_NATIVE_PATHS_H_
