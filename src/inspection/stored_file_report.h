// What a support engineer wants to know of one stored file: its content, judged, and who can change
// it. Made from plain data; nothing is read here.

#ifndef DEVICEID_INSPECTION_STORED_FILE_REPORT_H_
#define DEVICEID_INSPECTION_STORED_FILE_REPORT_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "inspection/stored_bytes.h"
#include "platform/file_attributes.h"

namespace system_info {

enum class FileRole { kId, kRecord, kEmulatedIds };

struct StoredFileReport {
  FileRole role = FileRole::kId;
  std::string path;                         // UTF-8
  std::optional<StateFolder::Kind> folder;  // None for a file that the user named.
  FileAttributes facts;
  StoredFile::State state = StoredFile::State::kMissing;
  std::string why;       // If unreadable.
  IdContent id;          // Of an id file.
  RecordContent record;  // Of a record.
  std::vector<Warning> warnings;
};

// The role that a file of this name has, or none.
std::optional<FileRole> RoleOf(const std::string& file_name);

StoredFileReport ReportOn(FileRole role, const std::string& path, const FileAttributes& facts,
                          const StoredFile& file);

// Whether the record and the id file that the library would use have the same id; none if one of
// them is missing. `reports` are those of the common folder before those of the user's.
std::optional<bool> RecordAgrees(const std::vector<StoredFileReport>& reports);

// "good", "empty", "damaged", "missing" or "unreadable".
std::string StateText(const StoredFileReport& report);

// True if there is a good record and no id file is good: each call gives result 4 then.
bool IsRecordWithoutId(const std::vector<StoredFileReport>& reports);

// True if the file stands in the way of an id: damaged or unreadable.
bool IsBad(const StoredFileReport& report);

struct InspectionStyle {
  bool colour = false;
  // The local date of a time in seconds since 1 January 1970 UTC: "2026-11-03".
  std::function<std::string(std::int64_t)> date;
};

// For people: a paragraph for each file, and one line on whether they agree.
std::string ToText(const std::vector<StoredFileReport>& reports, const InspectionStyle& style);

// One object as docs/inspect.schema.json describes it, without a line end behind it.
std::string ToJson(const std::vector<StoredFileReport>& reports);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_STORED_FILE_REPORT_H_
