// The report on each stored file of a folder, or of this machine.

#ifndef DEVICEID_TOOLS_DEVICEID_STORED_FILE_REPORTS_H_
#define DEVICEID_TOOLS_DEVICEID_STORED_FILE_REPORTS_H_

#include <filesystem>
#include <optional>
#include <vector>

#include "inspection/stored_file_report.h"

namespace deviceid {

system_info::StoredFileReport ReportOnFile(const std::filesystem::path& path,
                                           system_info::FileRole role);

std::vector<system_info::StoredFileReport> ReportOnFolder(
    const std::filesystem::path& folder, std::optional<system_info::StateFolder::Kind> kind);

// The common folder, then the one of this account.
std::vector<system_info::StoredFileReport> ReportOnMachine();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_STORED_FILE_REPORTS_H_
