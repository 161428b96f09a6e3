#include "platform/file_backup.h"

#include <aclapi.h>
#include <sddl.h>
#include <shlobj.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <system_error>

#include "platform/accounts.h"
#include "platform/native_paths.h"
#include "platform/unique_handle.h"
#include "platform/windows_api.h"

namespace system_info {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// Also opens folders, and links themselves.
constexpr DWORD kAnyKind = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
constexpr SECURITY_INFORMATION kSecurity =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
// The attributes that can be set.
constexpr DWORD kAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                              FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                              FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

// Hosts open a file for much shorter.
constexpr int kAttempts = 100;
constexpr DWORD kPause = 20;

[[noreturn]] void Fail(DWORD error, const fs::path& path) {
  throw std::system_error(static_cast<int>(error), std::system_category(), ToUtf8(path));
}

void Check(BOOL done, const fs::path& path) {
  if (done == 0) Fail(GetLastError(), path);
}

std::string TextOf(const FILETIME& time) {
  return std::to_string((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) |
                        time.dwLowDateTime);
}

FILETIME ParseTime(const std::string& text) {
  const std::uint64_t ticks = std::stoull(text);
  return {static_cast<DWORD>(ticks & 0xffffffff), static_cast<DWORD>(ticks >> 32)};
}

// A security descriptor as text (SDDL).
std::string SecurityOf(const fs::path& path) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring name = path.wstring();
  const DWORD error = GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, kSecurity, nullptr,
                                            nullptr, nullptr, nullptr, &descriptor);
  if (error != ERROR_SUCCESS) Fail(error, path);
  LPWSTR text = nullptr;
  const BOOL told = ConvertSecurityDescriptorToStringSecurityDescriptorW(
      descriptor, SDDL_REVISION_1, kSecurity, &text, nullptr);
  LocalFree(descriptor);
  Check(told, path);
  std::string security = ToUtf8(std::wstring(text));
  LocalFree(text);
  return security;
}

// Administrators may change the owner of a file after enabling the privilege.
void AllowAnyOwner() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token) == 0) {
    return;
  }
  TOKEN_PRIVILEGES privileges = {};
  privileges.PrivilegeCount = 1;
  privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
  if (LookupPrivilegeValueA(nullptr, SE_RESTORE_NAME, &privileges.Privileges[0].Luid) != 0) {
    AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr);
  }
  CloseHandle(token);
}

void ApplySecurity(const fs::path& path, const std::string& wanted) {
  if (SecurityOf(path) == wanted) return;
  AllowAnyOwner();
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  Check(ConvertStringSecurityDescriptorToSecurityDescriptorW(FromUtf8(wanted).c_str(),
                                                             SDDL_REVISION_1, &descriptor, nullptr),
        path);
  const BOOL set = SetFileSecurityW(path.c_str(), kSecurity, descriptor);
  const DWORD error = GetLastError();
  LocalFree(descriptor);
  if (set == 0) Fail(error, path);
}

HANDLE Open(const fs::path& path, DWORD access) {
  return CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING, kAnyKind, nullptr);
}

// The names of the owner of a file that is made now, and of this account.
std::array<std::string, 2> OwnSids() {
  std::array<std::string, 2> sids;
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) return sids;
  constexpr TOKEN_INFORMATION_CLASS kClasses[] = {TokenOwner, TokenUser};
  for (std::size_t i = 0; i < sids.size(); ++i) {
    alignas(TOKEN_USER) std::array<char, 512> buffer = {};
    DWORD size = static_cast<DWORD>(buffer.size());
    if (GetTokenInformation(token, kClasses[i], buffer.data(), size, &size) == 0) continue;
    // Both begin with the SID.
    LPWSTR text = nullptr;
    if (ConvertSidToStringSidW(*reinterpret_cast<PSID*>(buffer.data()), &text) == 0) continue;
    sids.at(i) = "O:" + ToUtf8(std::wstring(text));
    LocalFree(text);
  }
  CloseHandle(token);
  return sids;
}

std::string OwnerOf(const fs::path& path) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring name = path.wstring();
  const DWORD error = GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION,
                                            &owner, nullptr, nullptr, nullptr, &descriptor);
  if (error != ERROR_SUCCESS) Fail(error, path);
  LPWSTR text = nullptr;
  std::string sid;
  if (ConvertSidToStringSidW(owner, &text) != 0) sid = "O:" + ToUtf8(std::wstring(text));
  LocalFree(text);
  LocalFree(descriptor);
  return sid;
}

// From here on nobody else has the file open.
HANDLE OpenAlone(const fs::path& path) {
  for (int attempt = 0;; ++attempt) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    const bool in_use = file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION;
    if (!in_use || attempt == kAttempts) return file;
    Sleep(kPause);
  }
}

}  // namespace

FileProperties ReadProperties(const fs::path& path) {
  const UniqueFile file(Open(path, FILE_READ_ATTRIBUTES));
  Check(file.valid() ? TRUE : FALSE, path);
  BY_HANDLE_FILE_INFORMATION data = {};
  Check(GetFileInformationByHandle(file.get(), &data), path);
  FileProperties properties;
  properties["attributes"] = std::to_string(data.dwFileAttributes & kAttributes);
  properties["created"] = TextOf(data.ftCreationTime);
  properties["modified"] = TextOf(data.ftLastWriteTime);
  properties["accessed"] = TextOf(data.ftLastAccessTime);
  properties["security"] = SecurityOf(path);
  return properties;
}

void ApplyProperties(const fs::path& path, const FileProperties& properties) {
  const FileProperties present = ReadProperties(path);
  ApplySecurity(path, properties.at("security"));
  if (present.at("attributes") != properties.at("attributes")) {
    const DWORD wanted = std::stoul(properties.at("attributes")) & kAttributes;
    Check(SetFileAttributesW(path.c_str(), wanted == 0 ? FILE_ATTRIBUTE_NORMAL : wanted), path);
  }
  const UniqueFile file(Open(path, FILE_WRITE_ATTRIBUTES));
  Check(file.valid() ? TRUE : FALSE, path);
  const FILETIME created = ParseTime(properties.at("created"));
  const FILETIME accessed = ParseTime(properties.at("accessed"));
  const FILETIME modified = ParseTime(properties.at("modified"));
  Check(SetFileTime(file.get(), &created, &accessed, &modified), path);
}

bool MayMakeAgain(const fs::path& path) {
  const std::string owner = OwnerOf(path);
  for (const std::string& own : OwnSids()) {
    if (owner == own) return true;
  }
  return PresentAccount().privileged;
}

void WriteDurably(const fs::path& path, const std::string& bytes) {
  const UniqueFile file(OpenAlone(path));
  Check(file.valid() ? TRUE : FALSE, path);
  BY_HANDLE_FILE_INFORMATION data = {};
  Check(GetFileInformationByHandle(file.get(), &data), path);
  constexpr DWORD kOther = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
  // A second hard link could be a file somewhere else.
  if ((data.dwFileAttributes & kOther) != 0 || data.nNumberOfLinks > 1) {
    Fail(ERROR_TOO_MANY_LINKS, path);
  }
  DWORD written = 0;
  Check(WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr),
        path);
  if (written != bytes.size()) Fail(ERROR_DISK_FULL, path);
  Check(SetEndOfFile(file.get()), path);
  Check(FlushFileBuffers(file.get()), path);
}

// The file system journals names by itself.
void SyncFolder(const fs::path& /*folder*/) {}

// The parent belongs to the account, so its inherited rights are those of this account.
void MakePrivateFolder(const fs::path& path) {
  Check(CreateDirectoryW(path.c_str(), nullptr), path);
}

fs::path BackupsFolder() {
  std::array<wchar_t, MAX_PATH> root = {};
  if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, root.data()) !=
      S_OK) {
    return {};
  }
  return fs::path(root.data()) / "deviceid" / "backups";
}

MachineLock::MachineLock(const fs::path& /*folder*/) {
  const HANDLE mutex = CreateMutexW(nullptr, TRUE, L"Global\\deviceid-repair");
  const DWORD error = GetLastError();
  handle_ = reinterpret_cast<std::intptr_t>(mutex);
  // The lock of another account cannot even be opened.
  held_ = mutex != nullptr && error != ERROR_ALREADY_EXISTS;
}

MachineLock::~MachineLock() {
  const HANDLE mutex = reinterpret_cast<HANDLE>(handle_);
  if (mutex != nullptr) CloseHandle(mutex);
}

}  // namespace system_info
