// The attributes of a file that a support engineer needs.

#ifndef DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_
#define DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace system_info {

enum class FileKind { kMissing, kRegular, kFolder, kLink, kOther, kUnknown };

struct FileAttributes {
  // The kind of the path itself: a link counts as a link. kUnknown without permission to look.
  FileKind kind = FileKind::kUnknown;
  // The library does not follow the link, which belongs neither to root nor to this account.
  bool foreign_link = false;
  std::uint64_t size = 0;     // Bytes, of a regular file.
  std::int64_t modified = 0;  // Seconds since 1 January 1970 UTC.
  std::string owner;          // UTF-8; empty if the system does not tell.
  // Other writers than the owner and the administrators, in UTF-8: "everybody", "group staff",
  // names of accounts. Empty if there are none.
  std::string other_writers;
};

// Reads the attributes and changes nothing.
FileAttributes LookAtFile(const std::filesystem::path& path);

// The first `limit` bytes of a regular file, which is shared while open. None, with errno set, if
// it is not a regular file or cannot be read.
std::optional<std::string> ReadBytes(const std::filesystem::path& path, std::size_t limit);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_
