#include "platform/accounts.h"

#include <pwd.h>
#include <unistd.h>

#include <set>

namespace system_info {

Account PresentAccount() {
  const uid_t user = geteuid();
  const passwd* entry = getpwuid(user);
  return {entry != nullptr ? entry->pw_name : std::to_string(user), user == 0};
}

std::vector<UserRoot> OtherUserRoots() {
  std::vector<UserRoot> roots;
  std::set<std::string> homes;  // Service accounts share some.
  const uid_t user = geteuid();
  setpwent();
  while (const passwd* entry = getpwent()) {
    const std::string home = entry->pw_dir;
    if (entry->pw_uid == user || home.size() < 2 || home[0] != '/') continue;
    if (!homes.insert(home).second) continue;
    roots.push_back({entry->pw_name, std::filesystem::path(home) / ".local" / "share"});
  }
  endpwent();
  return roots;
}

}  // namespace system_info
