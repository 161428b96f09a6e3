// The accounts of this machine that can have their own id.

#ifndef DEVICEID_PLATFORM_ACCOUNTS_H_
#define DEVICEID_PLATFORM_ACCOUNTS_H_

#include <filesystem>
#include <string>
#include <vector>

namespace system_info {

struct Account {
  std::string name;  // UTF-8
  // True for root, or a member of the administrators that runs with their rights.
  bool privileged = false;
};

Account PresentAccount();

// The hardware values that only privileged accounts can read on this machine.
struct PrivilegedValues {
  bool product = false;  // The serial number.
  bool board = false;    // Likewise.
  bool uuid = false;     // Of the system.
};

PrivilegedValues FindPrivilegedValues();

struct UserRoot {
  std::string account;  // UTF-8
  std::filesystem::path folder;
};

// The parents of the user folders of all listed accounts but the present one. They need not exist
// or be readable.
std::vector<UserRoot> OtherUserRoots();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_ACCOUNTS_H_
