// Conversions between the three forms of a path: the library's text, the system's name, and UTF-8
// for people.

#ifndef DEVICEID_PLATFORM_NATIVE_PATHS_H_
#define DEVICEID_PLATFORM_NATIVE_PATHS_H_

#include <filesystem>
#include <string>

namespace system_info {

// The path for a narrow path of the library, as the narrow calls of the system interpret it.
std::filesystem::path FromSystemText(const std::string& text);

// The path for an argument of the program.
std::filesystem::path FromUtf8(const std::string& text);

std::string ToUtf8(const std::filesystem::path& path);
std::string ToUtf8(const std::wstring& text);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_NATIVE_PATHS_H_
