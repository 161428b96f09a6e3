#include "tools/deviceid/stored_file_reports.h"

#include <iterator>
#include <utility>

#include "platform/file_attributes.h"
#include "platform/native_paths.h"
#include "support/folder_paths.h"
#include "tools/deviceid/state_folders.h"

namespace deviceid {
namespace {

using system_info::FileRole;
using system_info::StateFolder;
using system_info::StoredFileReport;

constexpr const char* kFileNames[] = {"device.idv2", "device.id", "hid_settings",
                                      "hardware_ids.emulated"};

}  // namespace

StoredFileReport ReportOnFile(const std::filesystem::path& path, FileRole role) {
  return system_info::ReportOn(role, system_info::ToUtf8(path), system_info::LookAtFile(path),
                               ReadStoredFile(path));
}

// Of the list for emulation only where there is one: it is no file of the library's own.
std::vector<StoredFileReport> ReportOnFolder(const std::filesystem::path& folder,
                                             std::optional<StateFolder::Kind> kind) {
  std::vector<StoredFileReport> reports;
  for (const char* name : kFileNames) {
    StoredFileReport report = ReportOnFile(folder / name, *system_info::RoleOf(name));
    const bool emulated = report.role == FileRole::kEmulatedIds;
    if (emulated && report.state == system_info::StoredFile::State::kMissing) continue;
    report.folder = kind;
    reports.push_back(std::move(report));
  }
  return reports;
}

std::vector<StoredFileReport> ReportOnMachine() {
  using system_info::FromSystemText;
  std::vector<StoredFileReport> reports = ReportOnFolder(
      FromSystemText(system_info::CommonFolderPath(false)), StateFolder::Kind::kCommon);
  std::vector<StoredFileReport> own =
      ReportOnFolder(FromSystemText(system_info::UserFolderPath(false)), StateFolder::Kind::kUser);
  std::move(own.begin(), own.end(), std::back_inserter(reports));
  return reports;
}

}  // namespace deviceid
