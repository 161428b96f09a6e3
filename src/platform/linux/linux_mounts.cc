#include "platform/linux/linux_mounts.h"

#include <linux/magic.h>

#include <algorithm>
#include <string_view>

#include "platform/linux/value_files.h"

namespace system_info {
namespace {

// Takes the part before the first `separator` from `text`.
std::string_view TakeUpTo(char separator, std::string_view& text) {
  const std::string_view taken = text.substr(0, text.find(separator));
  text.remove_prefix(std::min(text.size(), taken.size() + 1));
  return taken;
}

// "27 1 254:0 / /mnt rw,relatime shared:1 - ext4 /dev/vda rw": the number of fields before the dash
// varies.
std::optional<Mount> ParseLine(std::string_view line) {
  Mount mount;
  TakeUpTo(' ', line);
  TakeUpTo(' ', line);
  mount.device = TakeUpTo(' ', line);
  TakeUpTo(' ', line);
  mount.point = TakeUpTo(' ', line);
  while (!line.empty() && TakeUpTo(' ', line) != "-") {
  }
  mount.type = TakeUpTo(' ', line);
  mount.source = TakeUpTo(' ', line);
  mount.options = TakeUpTo(' ', line);
  if (mount.options.empty()) return std::nullopt;
  return mount;
}

bool Holds(std::string_view point, std::string_view path) {
  if (point == "/") return true;
  return path.starts_with(point) && (path.size() == point.size() || path[point.size()] == '/');
}

bool IsKeptInMemory(std::string_view type) {
  return type == "tmpfs" || type == "ramfs" || type == "rootfs";
}

// The folder in which an overlay stores its changes.
std::optional<std::string> UpperFolder(const Mount& mount) {
  const std::string key = ",upperdir=";
  const std::string options = "," + std::string(mount.options);
  const std::size_t position = options.find(key);
  if (mount.type != "overlay" || position == std::string::npos) return std::nullopt;
  const std::size_t begin = position + key.size();
  return options.substr(begin, options.find(',', begin) - begin);
}

}  // namespace

LinuxMounts::LinuxMounts(const std::string& root, const FileSystem& at_root)
    : root_(root),
      root_is_in_memory_(at_root.type == TMPFS_MAGIC || at_root.type == RAMFS_MAGIC),
      list_(ReadValue(root + "/proc/self/mountinfo").value_or("")) {
  for (std::string_view rest = list_; !rest.empty();) {
    if (const auto mount = ParseLine(TakeUpTo('\n', rest))) mounts_.push_back(*mount);
  }
}

const Mount* LinuxMounts::Holding(const std::string& path) const {
  const Mount* holding = nullptr;
  for (const Mount& mount : mounts_) {
    // Of two mounts at one path, the later one covers the earlier.
    const bool closer = holding == nullptr || mount.point.size() >= holding->point.size();
    if (closer && Holds(mount.point, path)) holding = &mount;
  }
  return holding;
}

bool LinuxMounts::IsVolatile(const std::string& path) const {
  const Mount* mount = Holding(path);
  if (mount == nullptr) return root_is_in_memory_;
  if (const auto upper = UpperFolder(*mount)) {
    // The path is valid where the overlay was mounted; inside a container it leads nowhere.
    const Mount* below = Holding(*upper);
    return Exists(root_ + *upper) && below != nullptr && IsKeptInMemory(below->type);
  }
  return IsKeptInMemory(mount->type);
}

}  // namespace system_info
