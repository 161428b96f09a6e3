// Whether a machine is fit to have an id that stays: what is wrong, and what mends it.
//
// The checks look at plain data; nothing is read here.

#ifndef DEVICEID_INSPECTION_HEALTH_CHECKS_H_
#define DEVICEID_INSPECTION_HEALTH_CHECKS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "inspection/stored_file_report.h"
#include "platform/accounts.h"
#include "platform/file_attributes.h"
#include "platform/file_system_facts.h"
#include "platform/system_facts.h"

namespace system_info {

// A state folder, there or not.
struct FolderFacts {
  StateFolder::Kind kind = StateFolder::Kind::kCommon;
  std::string path;
  FileAttributes attributes;
  bool can_store = false;  // This account may write its files, or make them.
  FileSystemFacts file_system;
  std::string old_path;  // The folder of older versions.
  std::string old_id;    // The good id in there, or empty.
};

// A good id that another account has in its own folder.
struct OtherAccountId {
  std::string account;
  std::string path;
  std::string id;
};

struct HealthFacts {
  std::int64_t now = 0;  // Seconds since 1 January 1970 UTC.
  Account account;
  SystemFacts system;
  MachineState machine;
  Explanation explanation;           // Of `machine`.
  std::vector<FolderFacts> folders;  // The common one, then the user's.
  std::vector<StoredFileReport> files;
  std::vector<OtherAccountId> other_ids;
};

enum class HealthLevel { kOk, kWarn, kFail };

struct HealthFinding {
  HealthLevel level = HealthLevel::kOk;
  std::string code;    // "others-may-write"
  std::string text;    // A sentence.
  std::string remedy;  // A command, or what to do; empty with kOk.
};

// At least one finding for each thing that was looked at.
std::vector<HealthFinding> CheckHealth(const HealthFacts& facts);

// Of the program: 0, 10 with a warning, 20 with a failure.
int StatusOf(const std::vector<HealthFinding>& findings);

// One line each.
std::string ToText(const std::vector<HealthFinding>& findings, bool colour);

// One object as docs/doctor.schema.json describes it, without a line end behind it.
std::string ToJson(const std::vector<HealthFinding>& findings);

// How long each value took to be read, by the times in the log of a reading.
struct SourceTime {
  std::string source;
  std::int64_t milliseconds = 0;
};
std::vector<SourceTime> TimesOfSources(const std::string& hardware_log);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_HEALTH_CHECKS_H_
