// What a support engineer needs to know about a file besides its content.

#ifndef DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_
#define DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace system_info {

enum class FileKind { kMissing, kRegular, kFolder, kLink, kOther, kUnknown };

struct FileAttributes {
  // Of the name itself: a link counts as a link. kUnknown if this account may not look.
  FileKind kind = FileKind::kUnknown;
  // A link that the library does not follow, since it belongs neither to root nor to this account.
  bool foreign_link = false;
  std::uint64_t size = 0;     // Bytes, of a regular file.
  std::int64_t modified = 0;  // Seconds since 1 January 1970 UTC.
  std::string owner;          // UTF-8; empty if the system does not tell.
  // Who but the owner and the administrators may write it, in UTF-8: "everybody", "group staff",
  // names of accounts. Empty if nobody.
  std::string other_writers;
};

// Looks at the file and changes nothing of it.
FileAttributes LookAtFile(const std::filesystem::path& path);

// The first `limit` bytes of a regular file, shared with everybody and opened no longer than
// needed. None, with errno set, if it is no regular file or cannot be read.
std::optional<std::string> ReadBytes(const std::filesystem::path& path, std::size_t limit);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_ATTRIBUTES_H_
