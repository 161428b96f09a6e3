// Which id and which record of the stored files count, by the files alone.

#ifndef DEVICEID_INSPECTION_STATE_FOLDERS_H_
#define DEVICEID_INSPECTION_STATE_FOLDERS_H_

#include <optional>
#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "inspection/stored_bytes.h"

namespace system_info {

// The first record that can be read.
std::optional<RecordSummary> CountingRecord(const std::vector<StateFolder>& folders);

struct CountingId {
  std::string id;      // As a call for format 2.0 returns it.
  bool older = false;  // From device.id.
};

// The id that a call for format 2.0 finds in a folder.
std::optional<CountingId> FindCountingId(const StateFolder& folder);

struct OtherId {
  std::string id;  // As a call for format 2.0 returns it.
  std::string path;
};

// The good id of `file` in the second folder, if the first one holds another.
std::optional<OtherId> FindOtherId(const std::vector<StateFolder>& folders,
                                   StoredFile StateFolder::*file);

// What is wrong with the first id file or record that is damaged or cannot be read, as the start of
// a sentence: "device.idv2 in /x is damaged (a line end stands at the id)". Empty if there is none.
std::string DescribeBadId(const std::vector<StateFolder>& folders, bool with_older);
std::string DescribeBadRecord(const std::vector<StateFolder>& folders);

// The first record that fails each call, or null.
struct FatalRecord {
  const StateFolder* folder = nullptr;
  RecordContent content;
};
std::optional<FatalRecord> FindFatalRecord(const std::vector<StateFolder>& folders);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_STATE_FOLDERS_H_
