// What a stored file needs of the file system that it lies on.

#ifndef DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_
#define DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace system_info {

struct FileSystemFacts {
  std::string type;             // "ext4", "NTFS"; empty if unknown.
  bool kept_in_memory = false;  // Lost with the next start.
  bool overlay = false;         // What is written goes to a layer above, as in a container.
  bool holds_root = false;      // The one that the system itself lies on.
  bool read_only = false;
  bool without_locks = false;               // Other machines do not see who has a file open.
  std::optional<std::uint64_t> free_bytes;  // For this account.
};

// Of the file system that holds `folder`, or will when it is made. `file` in it shows whether files
// can be locked, and may be missing.
FileSystemFacts LookAtFileSystem(const std::filesystem::path& folder,
                                 const std::filesystem::path& file);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_
