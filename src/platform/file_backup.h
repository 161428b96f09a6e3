// Operations for backups: owners, rights and dates of files, durable writes, and a lock.
//
// Functions that fail throw std::system_error with the code of the system.

#ifndef DEVICEID_PLATFORM_FILE_BACKUP_H_
#define DEVICEID_PLATFORM_FILE_BACKUP_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace system_info {

// Owner, rights and dates of a file, folder or link by name, as texts of the system's own. Links
// are not followed.
//
// Linux: owner, group, mode, times, extended attributes and with them access control lists.
// Windows: owner, group and access control list, attributes, times; no audit list, no streams.
using FileProperties = std::map<std::string, std::string>;

// Reads the bytes of a file without changing its access time.
FileProperties ReadProperties(const std::filesystem::path& path);

// Changes only the properties that differ. `path` is of the kind that the properties were read
// from.
void ApplyProperties(const std::filesystem::path& path, const FileProperties& properties);

// True if this account may give a new file all properties of the file at `path`.
bool MayMakeAgain(const std::filesystem::path& path);

// Replaces the bytes of a file, which keeps its owner and rights, or creates it. Follows no link.
// Readers never see a truncated file, unless it grows. Waits a moment for a host that has the file
// open.
void WriteDurably(const std::filesystem::path& path, const std::string& bytes);

// Flushes the names in `folder` to the disk.
void SyncFolder(const std::filesystem::path& folder);

// Makes one folder for this account alone. Throws also if the name exists.
void MakePrivateFolder(const std::filesystem::path& path);

// The default parent of this account's backups. It need not exist. Empty if the system names none.
std::filesystem::path BackupsFolder();

// A lock that one process of this machine at a time can hold. `folder` names the lock and is not
// changed.
class MachineLock {
 public:
  explicit MachineLock(const std::filesystem::path& folder);
  MachineLock(const MachineLock&) = delete;
  MachineLock& operator=(const MachineLock&) = delete;
  ~MachineLock();

  bool held() const { return held_; }

 private:
  std::intptr_t handle_ = -1;
  bool held_ = false;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_BACKUP_H_
