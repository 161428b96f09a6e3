// What a backup of files needs beside their bytes: owners, rights and dates, writing that has
// reached the disk when it returns, and a lock.
//
// Functions that fail throw std::system_error with the code of the system.

#ifndef DEVICEID_PLATFORM_FILE_BACKUP_H_
#define DEVICEID_PLATFORM_FILE_BACKUP_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace system_info {

// Owner, rights and dates of a file, folder or link by name, as texts of the system's own. Of a
// link those of the link itself.
//
// Linux: owner, group, mode, times, extended attributes and with them access control lists.
// Windows: owner, group and access control list, attributes, times; no audit list, no streams.
using FileProperties = std::map<std::string, std::string>;

// Leaves no trace in the time of the last access.
FileProperties ReadProperties(const std::filesystem::path& path);

// Changes what differs and nothing else. `path` is of the same kind as what the properties were
// read from.
void ApplyProperties(const std::filesystem::path& path, const FileProperties& properties);

// True if this account may give a new file all that the one at `path` has.
bool MayMakeAgain(const std::filesystem::path& path);

// Replaces the bytes of a file, which keeps its owner and rights, or makes it. Follows no link. A
// reader finds at no time a file that is cut, unless it grows. Waits a moment for a host that has
// the file open.
void WriteDurably(const std::filesystem::path& path, const std::string& bytes);

// Brings the names in `folder` to the disk.
void SyncFolder(const std::filesystem::path& folder);

// Makes one folder for this account alone. Throws also if there is something of that name.
void MakePrivateFolder(const std::filesystem::path& path);

// Where backups of this account go. Need not exist. Empty if the system names no such place.
std::filesystem::path BackupsFolder();

// One process of this machine holds it at a time, until it ends. `folder` names what is locked and
// is not changed.
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
