// A file that the user asks for: written whole, or not at all.

#ifndef DEVICEID_TOOLS_DEVICEID_WHOLE_FILE_H_
#define DEVICEID_TOOLS_DEVICEID_WHOLE_FILE_H_

#include <filesystem>
#include <string>

namespace deviceid {

// Throws Failure if `path` is a folder, or lies in a state folder: nothing but the library writes
// there.
void CheckPlaceOfFile(const std::filesystem::path& path);

// Puts `text` in the place of what stands at `path`, for this account alone to read. Throws Failure
// and leaves everything as it was if that fails.
void WriteWholeFile(const std::filesystem::path& path, const std::string& text);

// Bytes that nobody can foresee.
std::string RandomBytes(std::size_t count);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_WHOLE_FILE_H_
