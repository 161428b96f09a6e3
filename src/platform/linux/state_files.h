// The files that the library keeps on Linux, with what Windows promises of open files.
//
// A state file is a regular file. Anything else in its place is refused without waiting for it, and
// so is a symbolic link that belongs neither to root nor to this user: the common folder may be one
// in which other accounts can write.
//
// All functions leave errno for the caller on failure. None of them asks whether it means that the
// process is out of resources.

#ifndef DEVICEID_PLATFORM_LINUX_STATE_FILES_H_
#define DEVICEID_PLATFORM_LINUX_STATE_FILES_H_

#include <string>

#include "platform/linux/descriptor.h"

namespace system_info {

enum class Access { kRead, kWrite };

// Whom an open file is shared with, among the users of these functions, in this process and in
// others. A file system without locks shares freely.
enum class Sharing { kEverybody, kReaders, kNobody };

// What happens to a file that is missing.
enum class Missing { kFails, kIsMade };

// An open file with its share mode, which is given up with its scope.
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

// Invalid on failure; EWOULDBLOCK means that the share mode of somebody else forbids it.
StateFile OpenStateFile(const std::string& path, Access access, Sharing sharing, Missing missing);

// Deletes a file that nobody has open. EWOULDBLOCK means that somebody has.
//
// A file lease (F_SETLEASE) shows whether any other process has the file open, where the file
// system has leases and this user may take one. Elsewhere only the locks of these functions are
// seen.
bool DeleteStateFile(const std::string& path);

// Makes one folder, below what CommonRoot or UserRoot of the machine names also with all that is
// missing above it.
bool MakeStateFolder(const std::string& path);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_STATE_FILES_H_
