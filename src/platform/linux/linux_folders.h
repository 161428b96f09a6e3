// The folders of a Linux system above those of the library, and the way from a path to a file.
//
// An environment variable chooses the user's folder only if that folder belongs to the user: under
// sudo the environment is somebody else's. The owner is looked at again in each operation on a path
// below it, on the very handle that the operation goes through, so that nobody can exchange the
// folder between the look and the use.

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_

#include <optional>
#include <string>

#include "platform/linux/descriptor.h"

namespace system_info {

// Both are without a separator at the end, and need not exist. `root` is empty for the computer
// itself.
std::optional<std::string> FindCommonRoot(const std::string& root);
std::optional<std::string> FindUserRoot();

// Where a path is to be looked up: below `folder`, under `name`.
class Location {
 public:
  // `path` as it stands or, below the folder that the environment named in this thread's last call
  // of FindUserRoot, relative to a handle of that folder. The handle is not valid, and errno says
  // why, if the folder cannot be opened or belongs to somebody else.
  explicit Location(const std::string& path);

  bool valid() const { return valid_; }
  int folder() const;
  const char* name() const { return name_.c_str(); }

 private:
  Descriptor handle_;
  std::string name_;
  bool valid_ = true;
};

// Makes `folder` with all its missing parents, each with the permissions `mode`. Nothing is made
// below a folder of somebody else. True if it exists then.
bool MakeRoot(const std::string& folder, unsigned mode);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_FOLDERS_H_
