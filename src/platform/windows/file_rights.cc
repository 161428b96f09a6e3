#include "platform/file_rights.h"

#include <array>
#include <vector>

#include "platform/native_paths.h"
#include "platform/unique_handle.h"
#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Larger than any file of the library, so that one open reads a whole file.
constexpr std::size_t kStart = 1U << 16;

// The rights that GENERIC_WRITE requests for a file.
constexpr DWORD kToWrite = FILE_GENERIC_WRITE;

std::wstring Wide(const std::string& path) { return FromUtf8(path).wstring(); }

// The impersonation token of this thread, for access checks.
class Actor {
 public:
  Actor() {
    constexpr DWORD kAccess = TOKEN_QUERY | TOKEN_DUPLICATE;
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), kAccess, TRUE, &token) == 0 &&
        OpenProcessToken(GetCurrentProcess(), kAccess, &token) == 0) {
      return;
    }
    DuplicateToken(token, SecurityImpersonation, &token_);
    CloseHandle(token);
  }
  Actor(const Actor&) = delete;
  Actor& operator=(const Actor&) = delete;
  ~Actor() {
    if (token_ != nullptr) CloseHandle(token_);
  }

  HANDLE token() const { return token_; }

 private:
  HANDLE token_ = nullptr;
};

// The security descriptor of a file or folder, or empty if this account may not read it.
std::vector<BYTE> DescriptorOf(const std::wstring& path) {
  constexpr SECURITY_INFORMATION kParts =
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
  // Includes the integrity level if the system has one.
  for (const SECURITY_INFORMATION parts : {kParts | LABEL_SECURITY_INFORMATION, kParts}) {
    DWORD size = 0;
    GetFileSecurityW(path.c_str(), parts, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    if (size > 0 && GetFileSecurityW(path.c_str(), parts, descriptor.data(), size, &size) != 0) {
      return descriptor;
    }
  }
  return {};
}

bool Grants(const std::wstring& path, DWORD rights) {
  std::vector<BYTE> descriptor = DescriptorOf(path);
  const Actor actor;
  if (descriptor.empty() || actor.token() == nullptr) return false;
  GENERIC_MAPPING mapping = {FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                             FILE_ALL_ACCESS};
  std::array<BYTE, 1024> privileges = {};
  DWORD size = static_cast<DWORD>(privileges.size());
  DWORD granted = 0;
  BOOL allowed = FALSE;
  const BOOL checked =
      AccessCheck(descriptor.data(), actor.token(), rights, &mapping,
                  reinterpret_cast<PRIVILEGE_SET*>(privileges.data()), &size, &granted, &allowed);
  return checked != 0 && allowed != 0;
}

HANDLE OpenToLook(const std::wstring& path, DWORD access) {
  return CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                     FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool IsLink(const std::wstring& path) {
  WIN32_FIND_DATAW found = {};
  const HANDLE search = FindFirstFileW(path.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

// The target of a link. A dangling link counts as one that nobody follows.
void LookUpLink(const std::wstring& path, FileRights& rights) {
  const UniqueFile file(OpenToLook(path, 0));
  std::array<wchar_t, 4096> target = {};
  if (!file.valid()) return;
  const DWORD length = GetFinalPathNameByHandleW(
      file.get(), target.data(), static_cast<DWORD>(target.size()), VOLUME_NAME_DOS);
  if (length == 0 || length >= target.size()) return;
  rights.target = ToUtf8(std::wstring(target.data(), length));
  rights.trusted = rights.followed = rights.may_make_behind = true;
}

// False if the system fails to read.
bool ReadInto(std::string& bytes, HANDLE file, std::uint64_t offset, std::size_t size) {
  LARGE_INTEGER position = {};
  position.QuadPart = static_cast<LONGLONG>(offset);
  if (SetFilePointerEx(file, position, nullptr, FILE_BEGIN) == 0) return false;
  bytes.resize(size);
  DWORD count = 0;
  if (ReadFile(file, bytes.data(), static_cast<DWORD>(size), &count, nullptr) == 0) return false;
  bytes.resize(count);
  return true;
}

void LookUpFile(const std::wstring& path, DWORD attributes, FileRights& rights) {
  constexpr DWORD kKeptFromEmptying = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  rights.may_write = (attributes & FILE_ATTRIBUTE_READONLY) == 0 && Grants(path, kToWrite);
  rights.may_empty = rights.may_write && (attributes & kKeptFromEmptying) == 0;
  rights.may_delete = (attributes & FILE_ATTRIBUTE_READONLY) == 0;
  const UniqueFile file(OpenToLook(path, GENERIC_READ));
  rights.may_read = file.valid();
  if (!rights.may_read) return;
  rights.read_failed = !ReadInto(rights.start, file.get(), 0, kStart);
  if (rights.read_failed) rights.start.clear();
  rights.longer = rights.start.size() == kStart;
}

}  // namespace

std::string SystemPath(const std::string& narrow) { return ToUtf8(FromSystemText(narrow)); }

std::string SystemPath(const std::wstring& wide) { return ToUtf8(wide); }

std::optional<std::string> FolderIdentity(const std::string& path) {
  const UniqueFile folder(OpenToLook(Wide(path), 0));
  BY_HANDLE_FILE_INFORMATION data = {};
  if (!folder.valid() || GetFileInformationByHandle(folder.get(), &data) == 0) return std::nullopt;
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return std::nullopt;
  return std::to_string(data.dwVolumeSerialNumber) + ":" + std::to_string(data.nFileIndexHigh) +
         ":" + std::to_string(data.nFileIndexLow);
}

FileRights LookUpRights(const std::string& path) {
  FileRights rights;
  const std::wstring wide = Wide(path);
  const std::wstring folder = FromUtf8(path).parent_path().wstring();
  rights.may_make_file = Grants(folder, FILE_ADD_FILE);
  rights.may_make_folder = Grants(folder, FILE_ADD_SUBDIRECTORY);
  rights.may_remove_name = true;
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(wide.c_str(), GetFileExInfoStandard, &data) == 0) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND) rights.standing = Standing::kNothing;
    return rights;
  }
  rights.may_remove_name = Grants(folder, FILE_DELETE_CHILD) || Grants(wide, DELETE);
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    rights.standing = Standing::kFolder;
  } else if (IsLink(wide)) {
    rights.standing = Standing::kLink;
    LookUpLink(wide, rights);
  } else {
    rights.standing = Standing::kFile;
    LookUpFile(wide, data.dwFileAttributes, rights);
  }
  return rights;
}

std::optional<std::string> ReadPart(const std::string& path, std::uint64_t offset,
                                    std::size_t size) {
  const UniqueFile file(OpenToLook(Wide(path), GENERIC_READ));
  std::string bytes;
  if (!file.valid() || !ReadInto(bytes, file.get(), offset, size)) return std::nullopt;
  return bytes;
}

// The folder's rights for creators apply to the owner; where the library may make anything, these
// are all rights.
OwnRights RightsOfNew() { return {}; }

bool IsMadeWhenMissing(const std::string& /*folder*/) { return false; }

bool IsOwnFolder(const std::string& /*folder*/) { return false; }

std::optional<std::uint32_t> ScriptedAnswer(FileCall /*call*/, const std::string& /*path*/) {
  return std::nullopt;
}

}  // namespace system_info
