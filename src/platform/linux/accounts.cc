#include "platform/accounts.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

namespace system_info {
namespace {

constexpr const char* kDmi = "/sys/class/dmi/id";

// A value that the kernel does not have counts as readable by root only.
bool IsPrivate(const char* value) {
  struct stat status = {};
  const std::string path = std::string(kDmi) + "/" + value;
  return stat(path.c_str(), &status) != 0 || (status.st_mode & S_IROTH) == 0;
}

}  // namespace

Account PresentAccount() {
  const uid_t user = geteuid();
  const passwd* entry = getpwuid(user);
  return {entry != nullptr ? entry->pw_name : std::to_string(user), user == 0};
}

PrivilegedValues FindPrivilegedValues() {
  // Without DMI the UUID comes from the device tree, which everybody can read.
  const bool dmi = access(kDmi, F_OK) == 0;
  return {IsPrivate("product_serial"), IsPrivate("board_serial"), dmi && IsPrivate("product_uuid")};
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
