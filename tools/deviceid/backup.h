// A backup of the state folders: a folder with all their files, and a manifest that says what
// belongs to whom. The manifest is written last, so that a backup without one is known to be
// incomplete.
//
// Kept are bytes, owners, rights and dates, and links as links. Folders within a state folder,
// which no call touches, are left alone.

#ifndef DEVICEID_TOOLS_DEVICEID_BACKUP_H_
#define DEVICEID_TOOLS_DEVICEID_BACKUP_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "inspection/played_call.h"
#include "platform/file_backup.h"

namespace deviceid {

struct KeptFile {
  enum class Kind { kFile, kLink, kOther };  // Of the last one nothing is kept.
  std::string name;
  Kind kind = Kind::kOther;
  system_info::FileProperties properties;
  std::string bytes;  // Of a link where it leads.
};

struct KeptFolder {
  std::filesystem::path path;
  // The folder itself or, if it was missing, the nearest one above that was not.
  std::filesystem::path standing;
  system_info::FileProperties properties;  // Of `standing`.
  std::vector<KeptFile> files;

  bool missing() const { return path != standing; }
};

struct Backup {
  std::filesystem::path place;
  std::vector<KeptFolder> folders;
};

// Where the next backup goes: `wish`, a folder that is empty or missing, or one of its own in the
// usual place if that is empty. Throws Failure if there is no such place outside of `folders`.
std::filesystem::path ChoosePlace(const std::string& wish,
                                  const std::vector<std::filesystem::path>& folders);

// Copies `folders` to `place` and brings all of it to the disk. Throws Failure, and leaves nothing
// behind, if that fails.
Backup MakeBackup(const std::filesystem::path& place,
                  const std::vector<std::filesystem::path>& folders, const std::string& reason);

// Throws Failure if `place` is no backup, an incomplete or a damaged one.
Backup ReadBackup(const std::filesystem::path& place);

// What is different in a folder from what was kept, as the changes that bring it back: of the files
// of the library alone. `text` is the path of the folder as the library builds it.
std::vector<system_info::FileChange> ChangesTo(const KeptFolder& folder, const std::string& text);

// Brings everything back. Can be run again after it has failed or was stopped. Throws
// std::system_error if it fails.
void BringBack(const Backup& backup);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_BACKUP_H_
