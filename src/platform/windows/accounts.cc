#include "platform/accounts.h"

#include <array>

#include "platform/native_paths.h"
#include "platform/windows_api.h"

namespace system_info {
namespace {

constexpr const wchar_t* kProfiles =
    L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

bool RunsAsAdministrator() {
  SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
  PSID administrators = nullptr;
  BOOL member = FALSE;
  if (AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS,
                               0, 0, 0, 0, 0, 0, &administrators) == 0) {
    return false;
  }
  CheckTokenMembership(nullptr, administrators, &member);
  FreeSid(administrators);
  return member != FALSE;
}

// The profile of the account whose key is `sid`, or an empty path.
std::filesystem::path ProfileOf(const std::wstring& sid) {
  std::array<wchar_t, MAX_PATH> folder = {};
  DWORD size = sizeof(folder);
  const std::wstring key = std::wstring(kProfiles) + L"\\" + sid;
  if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"ProfileImagePath", RRF_RT_REG_SZ, nullptr,
                   folder.data(), &size) != ERROR_SUCCESS) {
    return {};
  }
  return folder.data();
}

std::filesystem::path OwnProfile() {
  std::array<wchar_t, MAX_PATH> folder = {};
  SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, folder.data());
  return folder.data();
}

}  // namespace

Account PresentAccount() {
  std::array<wchar_t, 257> name = {};
  DWORD size = static_cast<DWORD>(name.size());
  GetUserNameW(name.data(), &size);
  return {ToUtf8(std::wstring(name.data())), RunsAsAdministrator()};
}

// Every account can read them through WMI.
PrivilegedValues FindPrivilegedValues() { return {}; }

std::vector<UserRoot> OtherUserRoots() {
  std::vector<UserRoot> roots;
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kProfiles, 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return roots;
  }
  const std::filesystem::path own = OwnProfile();
  std::array<wchar_t, 256> sid = {};
  for (DWORD index = 0;; ++index) {
    DWORD length = static_cast<DWORD>(sid.size());
    if (RegEnumKeyExW(key, index, sid.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      break;
    }
    const std::filesystem::path profile = ProfileOf(sid.data());
    if (profile.empty() || profile == own) continue;
    roots.push_back({ToUtf8(profile.filename()), profile / "AppData" / "Roaming"});
  }
  RegCloseKey(key);
  return roots;
}

}  // namespace system_info
