#include "platform/file_system_facts.h"

#include <array>

#include "platform/native_paths.h"
#include "platform/windows_api.h"

namespace system_info {

FileSystemFacts LookAtFileSystem(const std::filesystem::path& folder,
                                 const std::filesystem::path& /*file*/) {
  FileSystemFacts facts;
  std::array<wchar_t, MAX_PATH> volume = {};
  if (GetVolumePathNameW(folder.c_str(), volume.data(), static_cast<DWORD>(volume.size())) == 0) {
    return facts;
  }
  facts.kept_in_memory = GetDriveTypeW(volume.data()) == DRIVE_RAMDISK;
  std::array<wchar_t, 64> type = {};
  DWORD flags = 0;
  if (GetVolumeInformationW(volume.data(), nullptr, 0, nullptr, nullptr, &flags, type.data(),
                            static_cast<DWORD>(type.size())) != 0) {
    facts.type = ToUtf8(std::wstring(type.data()));
    facts.read_only = (flags & FILE_READ_ONLY_VOLUME) != 0;
  }
  ULARGE_INTEGER available = {};
  if (GetDiskFreeSpaceExW(volume.data(), &available, nullptr, nullptr) != 0) {
    facts.free_bytes = available.QuadPart;
  }
  return facts;
}

}  // namespace system_info
