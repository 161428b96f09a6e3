// The properties of a file system that matter for stored files.

#ifndef DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_
#define DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace system_info {

struct FileSystemFacts {
  std::string type;             // "ext4", "NTFS"; empty if unknown.
  bool kept_in_memory = false;  // Lost at the next boot.
  bool overlay = false;         // Writes go to an upper layer, as in a container.
  bool holds_root = false;      // The file system of the system itself.
  bool read_only = false;
  bool without_locks = false;               // Other machines do not see who has a file open.
  std::optional<std::uint64_t> free_bytes;  // For this account.
};

// The facts of the file system that holds `folder`, or will when the folder is made. `file` is used
// to test for locks, and may be missing.
FileSystemFacts LookAtFileSystem(const std::filesystem::path& folder,
                                 const std::filesystem::path& file);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_SYSTEM_FACTS_H_
