#include "platform/linux/state_files.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <optional>

#include "platform/linux/linux_folders.h"
#include "platform/linux/machine.h"

namespace system_info {
namespace {

// Never writable for everybody, whatever the umask and the default ACL of the folder allow.
constexpr mode_t kFileMode = 0664;
constexpr mode_t kFolderMode = 0775;

// The number of links that the kernel follows in one path.
constexpr int kMaxLinks = 40;

// How often to retry an operation after the file was exchanged.
constexpr int kAttempts = 100;

// The signal for a broken lease. It is ignored unless the host handles it; the kernel's default
// signal (SIGIO) would end the process.
constexpr int kLeaseSignal = SIGURG;

// Local file systems on which a refused lease means that somebody has the file open. Network file
// systems refuse every lease.
constexpr std::array kWithLeases = {
    0xEF53L,      // ext2, ext3, ext4
    0x58465342L,  // XFS
    0x9123683EL,  // btrfs
    0xF2F52010L,  // F2FS
    0x2FC12FC1L,  // ZFS
    0xCA451A4EL,  // bcachefs
    long{OVERLAYFS_SUPER_MAGIC},
    long{TMPFS_MAGIC},
};

// The target of a link that root or this user made.
std::optional<std::string> TrustedTarget(const std::string& path) {
  const Location location(path);
  if (!location.valid()) return std::nullopt;
  const Descriptor link(
      openat(location.folder(), location.name(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status = {};
  if (!link.valid() || fstat(link.get(), &status) != 0) return std::nullopt;
  std::array<char, PATH_MAX> target = {};
  const ssize_t length = readlinkat(link.get(), "", target.data(), target.size());
  if (length < 0) return std::nullopt;
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    errno = EACCES;
    return std::nullopt;
  }
  const std::string text(target.data(), static_cast<std::size_t>(length));
  return text.starts_with('/') ? text : path.substr(0, path.rfind('/') + 1) + text;
}

// Opens the file at `path`, through trusted links only.
Descriptor OpenTrusted(std::string path, int flags) {
  for (int links = 0; links < kMaxLinks; ++links) {
    const Location location(path);
    if (!location.valid()) return Descriptor(-1);
    Descriptor file(RepeatInterrupted(
        [&] { return openat(location.folder(), location.name(), flags | O_NOFOLLOW, kFileMode); }));
    if (file.valid() || errno != ELOOP) return file;
    auto target = TrustedTarget(path);
    if (!target) return Descriptor(-1);
    path = std::move(*target);
  }
  errno = ELOOP;
  return Descriptor(-1);
}

// A missing file is made in a second step: some systems refuse O_CREAT for another user's existing
// file, even to read it.
Descriptor OpenRegular(const std::string& path, int flags, Missing missing) {
  flags |= O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  Descriptor file = OpenTrusted(path, flags);
  if (!file.valid() && errno == ENOENT && missing == Missing::kIsMade) {
    file = OpenTrusted(path, flags | O_CREAT);
  }
  struct stat status = {};
  if (!file.valid() || fstat(file.get(), &status) != 0) return Descriptor(-1);
  if (S_ISREG(status.st_mode)) return file;
  errno = EACCES;
  return Descriptor(-1);
}

// True if `path` still names the open file.
bool StillNamed(const std::string& path, int descriptor) {
  const Location location(path);
  struct stat opened = {};
  struct stat named = {};
  return location.valid() && fstat(descriptor, &opened) == 0 &&
         fstatat(location.folder(), location.name(), &named, 0) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// True for a file system that has leases and locks. errno is the same afterwards.
bool IsLocal(int descriptor) {
  const int error = errno;
  struct statfs status = {};
  const bool known = fstatfs(descriptor, &status) == 0;
  errno = error;
  return known &&
         std::find(kWithLeases.begin(), kWithLeases.end(), status.f_type) != kWithLeases.end();
}

// A lock belongs to the open file, not to the process. A lock that excludes readers needs the right
// to write.
bool Lock(int descriptor, short type) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  if (RepeatInterrupted([&] { return fcntl(descriptor, F_OFD_SETLK, &lock); }) == 0) return true;
  if (errno == EACCES) errno = EWOULDBLOCK;
  // Some network file systems report this for every lock.
  if (errno == ENOLCK && !IsLocal(descriptor)) return true;
  return errno != EWOULDBLOCK && errno != ENOLCK && errno != ENOMEM;
}

// True if nobody else holds a lock. For a file that this account may only read, and so cannot lock
// against readers.
bool IsUnlocked(int descriptor) {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (fcntl(descriptor, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return true;
  errno = EWOULDBLOCK;
  return false;
}

// A lease on an open file: the kernel grants it if nobody else has the file open, and blocks later
// opens.
class Lease {
 public:
  explicit Lease(int descriptor) : descriptor_(descriptor) {
    const f_owner_ex owner = {F_OWNER_TID, gettid()};
    if (fcntl(descriptor_, F_SETOWN_EX, &owner) != 0) return;
    if (fcntl(descriptor_, F_SETSIG, kLeaseSignal) != 0) return;
    granted_ = fcntl(descriptor_, F_SETLEASE, F_WRLCK) == 0;
    refused_ = !granted_ && errno == EAGAIN && IsLocal(descriptor_);
  }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease() {
    const int error = errno;
    if (granted_) fcntl(descriptor_, F_SETLEASE, F_UNLCK);
    errno = error;
  }

  // True if somebody else has the file open. False also if there are no leases.
  bool refused() const { return refused_; }

 private:
  int descriptor_;
  bool granted_ = false;
  bool refused_ = false;
};

// Opens a file to be deleted and locks it as far as this user's rights allow.
StateFile OpenToDelete(const std::string& path) {
  StateFile file(OpenRegular(path, O_RDWR, Missing::kFails));
  if (file.valid()) return Lock(file.get(), F_WRLCK) ? std::move(file) : StateFile();
  if (errno != EACCES && errno != EPERM && errno != EROFS) return file;
  file = StateFile(OpenRegular(path, O_RDONLY, Missing::kFails));
  if (!file.valid()) return file;
  return IsUnlocked(file.get()) && Lock(file.get(), F_RDLCK) ? std::move(file) : StateFile();
}

bool Unlink(const std::string& path) {
  const Location location(path);
  return location.valid() && unlinkat(location.folder(), location.name(), 0) == 0;
}

// Makes one of the two parents of the library's folders, and no other folder. The user's parent is
// private to the user.
bool MakeMissingRoot(const std::string& folder) {
  constexpr mode_t kCommonMode = 0755;
  constexpr mode_t kUserMode = 0700;
  if (folder == PresentMachine().CommonRoot()) return MakeRoot(folder, kCommonMode);
  return folder == PresentMachine().UserRoot() && MakeRoot(folder, kUserMode);
}

int MakeFolder(const std::string& path) {
  const Location location(path);
  return location.valid() ? mkdirat(location.folder(), location.name(), kFolderMode) : -1;
}

}  // namespace

StateFile::~StateFile() {
  if (!valid()) return;
  // A child process that was forked meanwhile shares the open file and must not keep the lock.
  const int error = errno;
  Lock(descriptor_.get(), F_UNLCK);
  errno = error;
}

StateFile OpenStateFile(const std::string& path, Access access, Sharing sharing, Missing missing) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    StateFile file(OpenRegular(path, access == Access::kRead ? O_RDONLY : O_WRONLY, missing));
    if (!file.valid() || sharing == Sharing::kEverybody) return file;
    if (!Lock(file.get(), sharing == Sharing::kReaders ? F_RDLCK : F_WRLCK)) return {};
    if (StillNamed(path, file.get())) return file;
  }
  errno = EWOULDBLOCK;
  return {};
}

bool DeleteStateFile(const std::string& path) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const StateFile file = OpenToDelete(path);
    if (!file.valid()) return false;
    const Lease lease(file.get());
    if (lease.refused()) break;
    if (StillNamed(path, file.get())) return Unlink(path);
  }
  errno = EWOULDBLOCK;
  return false;
}

bool MakeStateFolder(const std::string& path) {
  if (MakeFolder(path) == 0) return true;
  if (errno != ENOENT) return false;
  const std::string parent = path.substr(0, path.rfind('/'));
  return MakeMissingRoot(parent) && MakeFolder(path) == 0;
}

}  // namespace system_info
