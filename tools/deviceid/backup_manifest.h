// The manifest of a backup: all of it but the bytes, as JSON.

#ifndef DEVICEID_TOOLS_DEVICEID_BACKUP_MANIFEST_H_
#define DEVICEID_TOOLS_DEVICEID_BACKUP_MANIFEST_H_

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

#include "tools/deviceid/backup.h"

namespace deviceid {

std::string WriteManifest(const Backup& backup, const std::string& reason);

// The folder of the copies of one folder within the backup.
std::filesystem::path FolderOfCopies(std::size_t folder);

// A backup whose files still lack their bytes, which `read` gives by the name of their copy. Throws
// std::exception if the text is no manifest, or if the bytes are not those of the manifest.
Backup ReadManifest(const std::string& text,
                    const std::function<std::string(const std::filesystem::path&)>& read);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_BACKUP_MANIFEST_H_
