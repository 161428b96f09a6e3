// The accounts of this machine, as far as they can have an id of their own.

#ifndef DEVICEID_PLATFORM_ACCOUNTS_H_
#define DEVICEID_PLATFORM_ACCOUNTS_H_

#include <filesystem>
#include <string>
#include <vector>

namespace system_info {

struct Account {
  std::string name;  // UTF-8
  // May read and write what ordinary accounts may not: root, or a member of the administrators that
  // runs with their rights.
  bool privileged = false;
};

Account PresentAccount();

// The hardware values that privileged accounts alone can read on this machine.
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

// The folders that stand above the user folders of all accounts but the present one, as far as the
// system lists accounts. They need not exist or be readable.
std::vector<UserRoot> OtherUserRoots();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_ACCOUNTS_H_
