// The library's files on Linux, with the guarantees of Windows for open files.
//
// A state file is a regular file. Any other kind is refused without waiting for it, and so is a
// symbolic link that belongs neither to root nor to this user: other accounts may have write access
// to the common folder.
//
// All functions leave errno for the caller on failure. The caller checks whether the process is out
// of resources.

#ifndef DEVICEID_PLATFORM_LINUX_STATE_FILES_H_
#define DEVICEID_PLATFORM_LINUX_STATE_FILES_H_

#include <string>

#include "platform/linux/descriptor.h"

namespace system_info {

enum class Access { kRead, kWrite };

// The share mode of an open file among the users of these functions, in all processes. A file
// system without locks shares freely.
enum class Sharing { kEverybody, kReaders, kNobody };

// The handling of a missing file.
enum class Missing { kFails, kIsMade };

// An open file with its share mode; both end with its scope.
class StateFile {
 public:
  StateFile() : descriptor_(-1) {}
  explicit StateFile(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}
  StateFile(StateFile&&) = default;
  StateFile& operator=(StateFile&&) = default;
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;
  ~StateFile();

  bool valid() const { return descriptor_.valid(); }
  int get() const { return descriptor_.get(); }
  int release() { return descriptor_.release(); }

 private:
  Descriptor descriptor_;
};

// Invalid on failure; EWOULDBLOCK means that somebody else's share mode forbids the open.
StateFile OpenStateFile(const std::string& path, Access access, Sharing sharing, Missing missing);

// Deletes a file that nobody has open. EWOULDBLOCK means that somebody has.
//
// A file lease (F_SETLEASE) shows whether any other process has the file open, where the file
// system has leases and this user may take one. Elsewhere only the locks of these functions are
// seen.
bool DeleteStateFile(const std::string& path);

// Makes one folder. In the machine's CommonRoot or UserRoot it also makes all missing parents.
bool MakeStateFolder(const std::string& path);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_STATE_FILES_H_
