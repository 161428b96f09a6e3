#include "platform/linux/linux_mounts.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace system_info {
namespace {

// "27 1 254:0 / /mnt rw,relatime shared:1 - ext4 /dev/vda rw": the number of fields before the dash
// varies.
std::optional<Mount> ParseLine(const std::string& line) {
  Mount mount;
  std::string skipped;
  std::istringstream words(line);
  words >> skipped >> skipped >> mount.device >> skipped >> mount.point;
  while (words >> skipped && skipped != "-") {
  }
  words >> mount.type >> mount.source >> mount.options;
  if (!words) return std::nullopt;
  return mount;
}

bool Holds(const std::string& point, const std::string& path) {
  if (point == "/") return true;
  return path.starts_with(point) && (path.size() == point.size() || path[point.size()] == '/');
}

bool IsKeptInMemory(const std::string& type) {
  return type == "tmpfs" || type == "ramfs" || type == "rootfs";
}

// The folder in which an overlay keeps its changes.
std::optional<std::string> UpperFolder(const Mount& mount) {
  const std::string key = ",upperdir=";
  const std::string options = "," + mount.options;
  const std::size_t position = options.find(key);
  if (mount.type != "overlay" || position == std::string::npos) return std::nullopt;
  const std::size_t begin = position + key.size();
  return options.substr(begin, options.find(',', begin) - begin);
}

}  // namespace

LinuxMounts::LinuxMounts(const std::string& root) : root_(root) {
  std::ifstream file(root + "/proc/self/mountinfo");
  for (std::string line; std::getline(file, line);) {
    if (auto mount = ParseLine(line)) mounts_.push_back(*std::move(mount));
  }
}

const Mount* LinuxMounts::Holding(const std::string& path) const {
  const Mount* holding = nullptr;
  for (const Mount& mount : mounts_) {
    // Of two mounts at one place the later one covers the earlier.
    const bool closer = holding == nullptr || mount.point.size() >= holding->point.size();
    if (closer && Holds(mount.point, path)) holding = &mount;
  }
  return holding;
}

bool LinuxMounts::IsVolatile(const std::string& path) const {
  const Mount* mount = Holding(path);
  if (mount == nullptr) return false;
  if (const auto upper = UpperFolder(*mount)) {
    // The path is that of whoever mounted the overlay; inside a container it leads nowhere.
    std::error_code failure;
    const Mount* below = Holding(*upper);
    return std::filesystem::exists(root_ + *upper, failure) && below != nullptr &&
           IsKeptInMemory(below->type);
  }
  return IsKeptInMemory(mount->type);
}

}  // namespace system_info
