// The parents of the library's folders on Linux, and the lookup of a path below them.
//
// An environment variable chooses the user's folder only if that folder belongs to the user: under
// sudo the environment is somebody else's. Each operation on a path below the folder checks the
// owner again, on the handle that the operation uses, so that nobody can exchange the folder
// between check and use.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_

#include <optional>
#include <string>

#include "platform/linux/descriptor.h"

namespace system_info {

// Both have no trailing separator and need not exist. `root` is empty for the computer itself.
std::optional<std::string> FindCommonRoot(const std::string& root);
std::optional<std::string> FindUserRoot();

// The place to look up a path: `name` relative to `folder`.
class Location {
 public:
  // `path` unchanged or, below the folder that the environment named in this thread's last call of
  // FindUserRoot, relative to a handle of that folder. The handle is invalid, with the reason in
  // errno, if the folder cannot be opened or belongs to somebody else.
  explicit Location(const std::string& path);

  bool valid() const { return valid_; }
  int folder() const;
  const char* name() const { return name_.c_str(); }

 private:
  Descriptor handle_;
  std::string name_;
  bool valid_ = true;
};

// Makes `folder` with all its missing parents, each with the permissions `mode`. Makes nothing
// below a folder of somebody else. True if `folder` exists then.
bool MakeRoot(const std::string& folder, unsigned mode);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
