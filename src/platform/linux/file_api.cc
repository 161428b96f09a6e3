#include "platform/linux/file_api.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include "platform/linux/layer_state.h"
#include "platform/linux/linux_folders.h"
#include "platform/linux/out_of_resources.h"
#include "platform/linux/runtime_api.h"
#include "platform/linux/state_files.h"

using system_info::Access;
using system_info::Counted;
using system_info::DeleteStateFile;
using system_info::Live;
using system_info::Location;
using system_info::MakeStateFolder;
using system_info::Missing;
using system_info::OpenStateFile;
using system_info::PlatformCall;
using system_info::PresentMachine;
using system_info::RepeatInterrupted;
using system_info::ScriptedFailure;
using system_info::Sharing;
using system_info::StateFile;
using system_info::ThrowIfOutOfResources;
using system_info::UnlessOutOfMemory;

namespace {

// The largest read that the library asks for.
constexpr DWORD kReadSize = 8191;

struct OpenFile {
  StateFile file;
  std::string path;
  Counted counted{Live().handles};
};

BOOL Fail(DWORD code) {
  SetLastError(code);
  return 0;
}

// The library checks only for the code of an existing file.
BOOL FailWithErrno() { return Fail(errno == EEXIST ? ERROR_ALREADY_EXISTS : ERROR_ACCESS_DENIED); }

BOOL Finish(bool done) { return done ? 1 : FailWithErrno(); }

bool FailsByScript(PlatformCall call, std::string_view subject) {
  const auto code = ScriptedFailure(call, subject);
  if (code) SetLastError(*code);
  return code.has_value();
}

// Empty if a part of the path has no narrow form; no call takes an empty path.
std::string NarrowPath(const wchar_t* path) {
  std::array<char, PATH_MAX + MB_LEN_MAX> buffer = {};
  std::mbstate_t state = {};
  const std::size_t length = system_info::wcsrtombs(buffer.data(), &path, PATH_MAX, &state);
  return length < PATH_MAX ? std::string(buffer.data(), length) : std::string();
}

StateFile Open(const std::string& path, Access access, Sharing sharing, Missing missing) {
  StateFile file = OpenStateFile(path, access, sharing, missing);
  if (!file.valid()) ThrowIfOutOfResources(errno, path.c_str());
  return file;
}

// The old id file is deleted before the new one is opened, so an exception here would lose the id.
// Another thread may have taken the descriptor that the delete released, so this waits a moment for
// a free one. After that the library tries the other folder.
StateFile OpenToReplace(const std::string& path) {
  constexpr int kAttempts = 100;
  constexpr useconds_t kPause = 1000;
  StateFile file;
  for (int attempt = 0; attempt < kAttempts && !file.valid(); ++attempt) {
    if (attempt > 0) usleep(kPause);
    file = OpenStateFile(path, Access::kWrite, Sharing::kNobody, Missing::kIsMade);
    if (errno != EMFILE && errno != ENFILE) break;
  }
  return file;
}

HANDLE OpenHandle(const wchar_t* path, bool reads) {
  std::string narrow = NarrowPath(path);
  if (FailsByScript(PlatformCall::kCreateFile, narrow)) return INVALID_HANDLE_VALUE;
  StateFile file = reads ? Open(narrow, Access::kRead, Sharing::kReaders, Missing::kIsMade)
                         : OpenToReplace(narrow);
  if (!file.valid()) {
    FailWithErrno();
    return INVALID_HANDLE_VALUE;
  }
  return new OpenFile{std::move(file), std::move(narrow)};
}

ssize_t ReadSome(int descriptor, void* buffer, std::size_t size, const char* what) {
  const ssize_t count = RepeatInterrupted([&] { return ::read(descriptor, buffer, size); });
  if (count < 0) ThrowIfOutOfResources(errno, what);
  return count;
}

BOOL Delete(const std::string& path) {
  if (FailsByScript(PlatformCall::kDeleteFile, path)) return 0;
  const bool deleted = DeleteStateFile(path);
  if (!deleted) ThrowIfOutOfResources(errno, path.c_str());
  return Finish(deleted);
}

// Running out of resources does not throw here: the old file may have been deleted already, and the
// open that follows reports the same error.
BOOL CreateFolder(const std::string& path, const void* security) {
  if (security != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kCreateDirectory, path)) return 0;
  return Finish(MakeStateFolder(path));
}

bool Look(const std::string& path, struct stat& status) {
  const Location location(path);
  if (location.valid() && fstatat(location.folder(), location.name(), &status, 0) == 0) return true;
  ThrowIfOutOfResources(errno, path.c_str());
  return false;
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
  if (reads) return OpenHandle(path, reads);
  return UnlessOutOfMemory(INVALID_HANDLE_VALUE, [&] { return OpenHandle(path, reads); });
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) {
  const auto& opened = *static_cast<OpenFile*>(file);
  if (size != kReadSize || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kReadFile, opened.path)) return 0;
  const ssize_t count = ReadSome(opened.file.get(), buffer, size, opened.path.c_str());
  *read = static_cast<DWORD>(count);
  return Finish(count >= 0);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) {
  const auto& opened = *static_cast<OpenFile*>(file);
  if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (FailsByScript(PlatformCall::kWriteFile, opened.path)) return 0;
  const DWORD part = ScriptedFailure(PlatformCall::kWriteFileShort, opened.path).value_or(size);
  const ssize_t count = RepeatInterrupted([&] { return ::write(opened.file.get(), buffer, part); });
  *written = static_cast<DWORD>(count);
  return Finish(count >= 0);
}

BOOL CloseHandle(HANDLE file) {
  delete static_cast<OpenFile*>(file);
  return 1;
}

BOOL DeleteFileA(const char* path) { return Delete(path); }

BOOL DeleteFileW(const wchar_t* path) { return Delete(NarrowPath(path)); }

BOOL CreateDirectoryA(const char* path, void* security) { return CreateFolder(path, security); }

BOOL CreateDirectoryW(const wchar_t* path, void* security) {
  return CreateFolder(NarrowPath(path), security);
}

DWORD GetFileAttributesA(const char* path) {
  struct stat status = {};
  if (!Look(path, status)) {
    FailWithErrno();
    return INVALID_FILE_ATTRIBUTES;
  }
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

// NOLINTBEGIN(bugprone-reserved-identifier)

int _stat64i32(const char* path, struct _stat64i32* status) {
  struct stat found = {};
  if (!Look(path, found)) return -1;
  status->st_size = static_cast<std::int32_t>(found.st_size);
  return 0;
}

int _sopen(const char* path, int flags, int sharing, int permissions) {
  const bool reads = flags == (_O_RDONLY | _O_BINARY);
  const bool writes = flags == (_O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY);
  if ((!reads && !writes) || sharing != _SH_DENYNO || permissions != (_S_IREAD | _S_IWRITE)) {
    return -1;
  }
  StateFile file = Open(path, reads ? Access::kRead : Access::kWrite, Sharing::kEverybody,
                        reads ? Missing::kFails : Missing::kIsMade);
  if (file.valid() && writes && ftruncate(file.get(), 0) != 0) return -1;
  return file.release();
}

int _read(int descriptor, void* buffer, unsigned size) {
  return static_cast<int>(ReadSome(descriptor, buffer, size, "a stored file"));
}

int _write(int descriptor, const void* buffer, unsigned size) {
  if (ScriptedFailure(PlatformCall::kWriteStream)) return -1;
  return static_cast<int>(RepeatInterrupted([&] { return ::write(descriptor, buffer, size); }));
}

int _close(int descriptor) { return close(descriptor); }

// NOLINTEND(bugprone-reserved-identifier)
