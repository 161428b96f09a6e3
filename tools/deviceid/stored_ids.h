// The stored ids of this account, before and after a call.

#ifndef DEVICEID_TOOLS_DEVICEID_STORED_IDS_H_
#define DEVICEID_TOOLS_DEVICEID_STORED_IDS_H_

#include <filesystem>
#include <string>
#include <vector>

#include "inspection/played_call.h"

namespace deviceid {

// One id file. The id is as hosts get it; empty if there is no file, or no good id in it.
struct StoredId {
  std::filesystem::path path;
  std::string id;
};

// All places of an id, the common folder before the user folder.
std::vector<StoredId> LookAtStoredIds();

// The good ids of other accounts in their own folders, as far as this account may look.
struct OtherId {
  std::string account;
  StoredId stored;
};
std::vector<OtherId> LookAtOtherAccounts();

// The ids of other accounts that go once a call has made `changes`: an id in the common folder
// takes the place of what they have in their own folders. None for an ordinary account.
std::vector<OtherId> IdsTakenAway(const std::vector<system_info::FileChange>& changes);

// What happened to the ids between two looks, as one line: "stored 2-0-... in ...". Empty if
// nothing did.
std::string DescribeChange(const std::vector<StoredId>& before, const std::vector<StoredId>& after);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_STORED_IDS_H_
