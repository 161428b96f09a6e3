#include "platform/file_attributes.h"

#include <aclapi.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/native_paths.h"
#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr std::int64_t kTicksFrom1601To1970 = 116'444'736'000'000'000;
constexpr std::int64_t kTicksPerSecond = 10'000'000;

std::string NameOf(PSID sid) {
  std::array<wchar_t, 257> name = {};
  std::array<wchar_t, 257> domain = {};
  DWORD name_size = static_cast<DWORD>(name.size());
  DWORD domain_size = static_cast<DWORD>(domain.size());
  SID_NAME_USE use = SidTypeUnknown;
  if (LookupAccountSidW(nullptr, sid, name.data(), &name_size, domain.data(), &domain_size, &use) ==
      0) {
    return "";
  }
  return ToUtf8(std::wstring(name.data()));
}

bool IsAdministrative(PSID sid) {
  return IsWellKnownSid(sid, WinBuiltinAdministratorsSid) != 0 ||
         IsWellKnownSid(sid, WinLocalSystemSid) != 0;
}

std::string WritersOf(PACL list, PSID owner) {
  std::string writers;
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    ACCESS_ALLOWED_ACE* entry = nullptr;
    if (GetAce(list, i, reinterpret_cast<void**>(&entry)) == 0) continue;
    if (entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE) continue;
    if ((entry->Header.AceFlags & INHERIT_ONLY_ACE) != 0) continue;
    if ((entry->Mask & (FILE_WRITE_DATA | GENERIC_WRITE | GENERIC_ALL)) == 0) continue;
    PSID sid = &entry->SidStart;
    if (IsAdministrative(sid) || (owner != nullptr && EqualSid(sid, owner) != 0)) continue;
    const std::string name = NameOf(sid);
    if (!name.empty()) writers += (writers.empty() ? "" : ", ") + name;
  }
  return writers;
}

void LookAtSecurity(const std::filesystem::path& path, FileAttributes& facts) {
  std::wstring name = path.wstring();
  PSID owner = nullptr;
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT,
                            OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr,
                            &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return;
  }
  if (owner != nullptr) facts.owner = NameOf(owner);
  facts.other_writers = list == nullptr ? "everybody" : WritersOf(list, owner);
  LocalFree(descriptor);
}

}  // namespace

FileAttributes LookAtFile(const std::filesystem::path& path) {
  FileAttributes facts;
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0) {
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (missing) facts.kind = FileKind::kMissing;
    return facts;
  }
  const bool link = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  const bool folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  facts.kind = link ? FileKind::kLink : folder ? FileKind::kFolder : FileKind::kRegular;
  facts.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  const std::int64_t ticks =
      (static_cast<std::int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
      data.ftLastWriteTime.dwLowDateTime;
  facts.modified = (ticks - kTicksFrom1601To1970) / kTicksPerSecond;
  LookAtSecurity(path, facts);
  return facts;
}

std::optional<std::string> ReadBytes(const std::filesystem::path& path, std::size_t limit) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    errno = missing ? ENOENT : EACCES;
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 16384> buffer;
  DWORD count = 1;
  while (bytes.size() < limit && count > 0) {
    const std::size_t wanted = std::min(buffer.size(), limit - bytes.size());
    if (ReadFile(file, buffer.data(), static_cast<DWORD>(wanted), &count, nullptr) == 0) break;
    bytes.append(buffer.data(), count);
  }
  CloseHandle(file);
  return bytes;
}

}  // namespace system_info
