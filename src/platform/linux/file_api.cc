#include "platform/linux/file_api.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "platform/linux/layer_state.h"
#include "platform/linux/runtime_api.h"

using system_info::Counted;
using system_info::Live;
using system_info::PlatformCall;
using system_info::PresentMachine;
using system_info::ScriptedFailure;
using system_info::UnlessOutOfMemory;

namespace {

// The largest read that the library asks for.
constexpr DWORD kReadSize = 8191;

// How often an open is tried again because the file was deleted under it.
constexpr int kOpenAttempts = 100;

// The signal that tells of a broken lease. It is ignored unless the host handles it, where the
// signal that the kernel would send by itself ends the process.
constexpr int kLeaseSignal = SIGURG;

DWORD CodeOf(int error) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case EWOULDBLOCK:
    case ETXTBSY:
      return ERROR_SHARING_VIOLATION;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    default:
      return ERROR_GEN_FAILURE;
  }
}

// A descriptor that is closed with its scope.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  int get() const { return descriptor_; }
  int release() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
  }

 private:
  int descriptor_;
};

struct OpenFile {
  Descriptor descriptor;
  std::string path;
  Counted counted{Live().handles};
};

BOOL Fail(DWORD code) {
  SetLastError(code);
  return 0;
}

BOOL Finish(int result) { return result == 0 ? 1 : Fail(CodeOf(errno)); }

bool FailsByScript(PlatformCall call, std::string_view subject) {
  const auto code = ScriptedFailure(call, subject);
  if (code) SetLastError(*code);
  return code.has_value();
}

// Empty if a part of the path has no narrow form; no call takes an empty path.
std::string NarrowPath(const wchar_t* path) {
  std::array<char, 4097> buffer = {};
  std::mbstate_t state = {};
  const std::size_t length = system_info::wcsrtombs(buffer.data(), &path, buffer.size(), &state);
  return length < buffer.size() ? std::string(buffer.data(), length) : std::string();
}

// True if `path` still names the open file.
bool StillNamed(const std::string& path, int descriptor) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(descriptor, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

enum class Opened { kYes, kNo, kDeletedMeanwhile };

// Takes the share mode of a file that was just opened. A file system without locks shares freely.
Opened Share(const std::string& path, int descriptor, int lock) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    SetLastError(ERROR_ACCESS_DENIED);
    return Opened::kNo;
  }
  if (flock(descriptor, lock | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    SetLastError(ERROR_SHARING_VIOLATION);
    return Opened::kNo;
  }
  return StillNamed(path, descriptor) ? Opened::kYes : Opened::kDeletedMeanwhile;
}

// Some systems refuse to open another user's file, even to read it, where it might have been
// created.
int OpenOrCreate(const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), flags & ~O_CREAT);
  if (descriptor >= 0 || errno != ENOENT || (flags & O_CREAT) == 0) return descriptor;
  return open(path.c_str(), flags, 0666);
}

// Opens a regular file, never waiting for anything, and takes its share mode. Gives -1 on failure.
int OpenShared(const std::string& path, int flags, int lock) {
  for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
    Descriptor file(OpenOrCreate(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.get() < 0) {
      SetLastError(CodeOf(errno));
      return -1;
    }
    const Opened opened = Share(path, file.get(), lock);
    if (opened == Opened::kYes) return file.release();
    if (opened == Opened::kNo) return -1;
  }
  SetLastError(ERROR_SHARING_VIOLATION);
  return -1;
}

// A lease on an open file: the kernel grants it if nobody else has the file open, and holds back
// whoever opens it meanwhile.
class Lease {
 public:
  explicit Lease(int descriptor) : descriptor_(descriptor) {
    const f_owner_ex owner = {F_OWNER_TID, gettid()};
    if (fcntl(descriptor_, F_SETOWN_EX, &owner) != 0) return;
    if (fcntl(descriptor_, F_SETSIG, kLeaseSignal) != 0) return;
    granted_ = fcntl(descriptor_, F_SETLEASE, F_WRLCK) == 0;
    refused_ = !granted_ && errno == EAGAIN;
  }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease() {
    if (granted_) fcntl(descriptor_, F_SETLEASE, F_UNLCK);
  }

  // True if somebody else has the file open. False also where there are no leases.
  bool refused() const { return refused_; }

 private:
  int descriptor_;
  bool granted_ = false;
  bool refused_ = false;
};

template <typename Call>
BOOL FailWithoutMemory(Call call) {
  const BOOL done = UnlessOutOfMemory<BOOL>(-1, call);
  return done >= 0 ? done : Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL DeleteRegularFile(const std::string& path) {
  if (FailsByScript(PlatformCall::kDeleteFile, path)) return 0;
  const Descriptor file(OpenShared(path, O_RDONLY, LOCK_EX));
  if (file.get() < 0) return 0;
  const Lease lease(file.get());
  if (lease.refused()) return Fail(ERROR_SHARING_VIOLATION);
  return Finish(unlink(path.c_str()));
}

BOOL CreateFolder(const std::string& path, const void* security) {
  if (security != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kCreateDirectory, path)) return 0;
  return Finish(mkdir(path.c_str(), 0777));
}

// Runs `transfer`, which moves bytes and gives their number or -1, until no signal interrupts it.
template <typename Transfer>
BOOL MoveBytes(Transfer transfer, DWORD* moved) {
  ssize_t count = -1;
  do {
    count = transfer();
  } while (count < 0 && errno == EINTR);
  if (count < 0) return Fail(CodeOf(errno));
  *moved = static_cast<DWORD>(count);
  return 1;
}

}  // namespace

HRESULT SHGetFolderPathA(void* window, int folder_id, HANDLE token, DWORD flags, char* path) {
  if (window != nullptr || token != nullptr || flags != SHGFP_TYPE_CURRENT) return E_INVALIDARG;
  if (folder_id != CSIDL_COMMON_APPDATA && folder_id != CSIDL_APPDATA) return E_INVALIDARG;
  const auto root = folder_id == CSIDL_COMMON_APPDATA ? PresentMachine().CommonRoot()
                                                      : PresentMachine().UserRoot();
  if (!root || root->size() >= MAX_PATH) return E_FAIL;
  std::memcpy(path, root->c_str(), root->size() + 1);
  return S_OK;
}

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security,
                   DWORD disposition, DWORD flags, HANDLE pattern) {
  const bool reads = access == GENERIC_READ && share == FILE_SHARE_READ;
  const bool writes = access == GENERIC_WRITE && share == 0;
  if ((!reads && !writes) || security != nullptr || disposition != OPEN_ALWAYS ||
      flags != FILE_ATTRIBUTE_NORMAL || pattern != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  return UnlessOutOfMemory(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
    std::string narrow = NarrowPath(path);
    if (FailsByScript(PlatformCall::kCreateFile, narrow)) return INVALID_HANDLE_VALUE;
    Descriptor file(
        OpenShared(narrow, O_CREAT | (reads ? O_RDONLY : O_WRONLY), reads ? LOCK_SH : LOCK_EX));
    if (file.get() < 0) return INVALID_HANDLE_VALUE;
    return new OpenFile{Descriptor(file.release()), std::move(narrow)};
  });
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) {
  const auto& opened = *static_cast<OpenFile*>(file);
  if (size != kReadSize || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kReadFile, opened.path)) return 0;
  return MoveBytes([&] { return ::read(opened.descriptor.get(), buffer, size); }, read);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) {
  const auto& opened = *static_cast<OpenFile*>(file);
  if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kWriteFile, opened.path)) return 0;
  const DWORD count = ScriptedFailure(PlatformCall::kWriteFileShort, opened.path).value_or(size);
  return MoveBytes([&] { return ::write(opened.descriptor.get(), buffer, count); }, written);
}

BOOL CloseHandle(HANDLE file) {
  auto* opened = static_cast<OpenFile*>(file);
  // A child that was forked meanwhile must not go on with the share mode.
  flock(opened->descriptor.get(), LOCK_UN);
  delete opened;
  return 1;
}

BOOL DeleteFileA(const char* path) {
  return FailWithoutMemory([&] { return DeleteRegularFile(path); });
}

BOOL DeleteFileW(const wchar_t* path) {
  return FailWithoutMemory([&] { return DeleteRegularFile(NarrowPath(path)); });
}

BOOL CreateDirectoryA(const char* path, void* security) {
  return FailWithoutMemory([&] { return CreateFolder(path, security); });
}

BOOL CreateDirectoryW(const wchar_t* path, void* security) {
  return FailWithoutMemory([&] { return CreateFolder(NarrowPath(path), security); });
}

DWORD GetFileAttributesA(const char* path) {
  struct stat status = {};
  if (stat(path, &status) != 0) {
    SetLastError(CodeOf(errno));
    return INVALID_FILE_ATTRIBUTES;
  }
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

// NOLINTNEXTLINE(bugprone-reserved-identifier)
int _stat64i32(const char* path, struct _stat64i32* status) {
  struct stat found = {};
  if (stat(path, &found) != 0) return -1;
  status->st_size = static_cast<std::int32_t>(found.st_size);
  return 0;
}

// NOLINTBEGIN(bugprone-reserved-identifier)

int _sopen(const char* path, int flags, int sharing, int permissions) {
  const bool reads = flags == (_O_RDONLY | _O_BINARY);
  const bool writes = flags == (_O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY);
  if ((!reads && !writes) || sharing != _SH_DENYNO || permissions != (_S_IREAD | _S_IWRITE)) {
    return -1;
  }
  return open(path, (reads ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC) | O_CLOEXEC, 0666);
}

int _read(int descriptor, void* buffer, unsigned size) {
  DWORD count = 0;
  const BOOL done = MoveBytes([&] { return ::read(descriptor, buffer, size); }, &count);
  return done != 0 ? static_cast<int>(count) : -1;
}

int _write(int descriptor, const void* buffer, unsigned size) {
  DWORD count = 0;
  const BOOL done = MoveBytes([&] { return ::write(descriptor, buffer, size); }, &count);
  return done != 0 ? static_cast<int>(count) : -1;
}

int _close(int descriptor) { return close(descriptor); }

// NOLINTEND(bugprone-reserved-identifier)
