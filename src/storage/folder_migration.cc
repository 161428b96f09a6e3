#include "storage/folder_migration.h"

#include "support/file_operations.h"
#include "support/folder_paths.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

// The one file that the old folder can hold.
constexpr const char* kCarriedFile = "device.id";

}  // namespace

void MigrateDeviceIdFolders(HIDLog& log) {
  CopyDeviceIdFolder(log, CommonFolderPath(true), CommonFolderPath(false));
  CopyDeviceIdFolder(log, UserFolderPath(true), UserFolderPath(false));
}

void CopyDeviceIdFolder(HIDLog& log, const std::string& old_dir, const std::string& new_dir) {
  if (IsDirectory(new_dir) || !IsDirectory(old_dir)) return;
  log.WriteWide(L"[CopyDeviceIdFolder] new dir: " + ToWide(new_dir), LogLevel::Debug);
  log.WriteWide(L"[CopyDeviceIdFolder] old dir: " + ToWide(old_dir), LogLevel::Debug);

  const std::string old_file = old_dir + PathSeparator() + kCarriedFile;
  if (!PathExists(old_file)) {
    log.WriteWide(L"[CopyDeviceIdFolder] old device.id not found", LogLevel::Info);
    return;
  }
  {
    // Once the new folder exists, nothing is migrated again. The copy needs two open files, and an
    // open throws if the process is out of resources, so this is tried before the folder is made.
    const InputFile one(old_file);
    const InputFile other(old_file);
  }
  if (!EnsureDirectory(new_dir)) return;
  log.WriteWide(L"[CopyDeviceIdFolder] Create new dir: " + ToWide(new_dir), LogLevel::Debug);

  if (CopyFileContents(old_file, new_dir + PathSeparator() + kCarriedFile, false)) {
    log.WriteWide(L"[CopyDeviceIdFolder] Copy success", LogLevel::Debug);
  } else {
    log.WriteWide(L"[CopyDeviceIdFolder] Copy failed", LogLevel::Error);
  }
}

}  // namespace system_info
