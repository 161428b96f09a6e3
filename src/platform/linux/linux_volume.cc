#include "platform/linux/linux_volume.h"

#include <linux/magic.h>

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/linux/value_files.h"

namespace system_info {
namespace {

std::string FormatUuid(const std::array<std::uint8_t, 16>& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

// File systems that span devices have a number of their own.
bool HasNumberOfDevice(const Mount& mount) { return !mount.device.starts_with("0:"); }

// The name of the block device in "/dev" that a mount is made from. Empty if there is none.
std::string DeviceName(const std::string& root, const Mount& mount) {
  const auto name = LinkedName(root + "/sys/dev/block/" + std::string(mount.device));
  if (name) return *name;
  if (!mount.source.starts_with('/')) return {};
  const std::string source(mount.source);
  return LinkedName(root + source).value_or(LastName(source));
}

// All devices of a file system are listed below its UUID, whichever was mounted.
std::optional<std::string> UuidOfBtrfs(const std::string& root, const std::string& device) {
  const std::string folder = root + "/sys/fs/btrfs/";
  for (const std::string& uuid : NamesIn(folder)) {
    if (Exists(std::string(folder).append(uuid).append("/devices/").append(device))) return uuid;
  }
  return std::nullopt;
}

// The rest of the line that begins with `key`.
std::optional<std::string> ValueOf(std::string_view key, std::string_view lines) {
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find('\n'));
    if (line.starts_with(key)) return std::string(line.substr(key.size()));
    lines.remove_prefix(line.size() == lines.size() ? line.size() : line.size() + 1);
  }
  return std::nullopt;
}

// The UUID that udev found on the device, even if the link of that name leads to another device.
std::optional<std::string> UuidByUdev(const std::string& root, const Mount& mount,
                                      const std::string& device) {
  std::optional<std::string> number(mount.device);
  if (!HasNumberOfDevice(mount)) number = ReadValue(root + "/sys/class/block/" + device + "/dev");
  if (!number) return std::nullopt;
  const std::string found = ReadValue(root + "/run/udev/data/b" + *number).value_or("");
  // Links are named by the encoded form.
  auto uuid = ValueOf("E:ID_FS_UUID_ENC=", found);
  return uuid ? uuid : ValueOf("E:ID_FS_UUID=", found);
}

std::optional<std::string> UuidByLink(const std::string& root, const std::string& device) {
  const std::string folder = root + "/dev/disk/by-uuid/";
  for (const std::string& uuid : NamesIn(folder)) {
    if (LinkedName(folder + uuid) == device) return uuid;
  }
  return std::nullopt;
}

// If several devices share a UUID, its link leads to any one of them, not always the same.
std::optional<std::string> UuidOfDevice(const std::string& root, const Mount& mount) {
  const std::string device = DeviceName(root, mount);
  if (device.empty()) return std::nullopt;
  std::optional<std::string> uuid;
  if (mount.type == "btrfs") uuid = UuidOfBtrfs(root, device);
  if (!uuid) uuid = UuidByUdev(root, mount, device);
  if (!uuid) uuid = UuidByLink(root, device);
  return uuid;
}

}  // namespace

std::optional<std::string> RootVolume(const std::string& root, const LinuxMounts& mounts,
                                      const FileSystem& at_root) {
  const Mount* mount = mounts.Holding("/");
  // An overlay has no file system of its own; the kernel gives it a random UUID at each mount.
  const bool is_overlay =
      at_root.type == OVERLAYFS_SUPER_MAGIC || (mount != nullptr && mount->type == "overlay");
  if (is_overlay || mounts.IsVolatile("/")) return std::nullopt;
  std::optional<std::string> uuid;
  if (at_root.uuid) {
    uuid = FormatUuid(*at_root.uuid);
  } else if (mount != nullptr) {
    uuid = UuidOfDevice(root, *mount);
  }
  return OnlyRealUuid(uuid);
}

}  // namespace system_info
