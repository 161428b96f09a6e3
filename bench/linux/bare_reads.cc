#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>

#include "bench/linux/pairs.h"

namespace bench {
namespace {

std::array<char, 1 << 16> buffer;

void ReadFile(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  while (read(file, buffer.data(), buffer.size()) > 0) {
  }
  close(file);
}

template <typename Visit>
void ForEachEntry(const char* path, Visit visit) {
  DIR* folder = opendir(path);
  if (folder == nullptr) return;
  while (const dirent* entry = readdir(folder)) {
    if (entry->d_name[0] != '.') visit(dirfd(folder), entry->d_name);
  }
  closedir(folder);
}

void ReadVolumeLinks() {
  ForEachEntry("/dev/disk/by-uuid", [](int folder, const char* name) {
    (void)!readlinkat(folder, name, buffer.data(), buffer.size());
  });
}

void ReadAdapters() {
  const std::string adapters = "/sys/class/net/";
  ForEachEntry(adapters.c_str(), [&](int, const char* name) {
    for (const char* value : {"/address", "/addr_assign_type", "/flags", "/ifindex"}) {
      ReadFile((adapters + name + value).c_str());
    }
  });
}

}  // namespace

void ReadSourcesOnce() {
  ReadFile("/var/lib/BrindleQuayWorks/device.idv2");
  ReadFile("/var/lib/BrindleQuayWorks/hid_settings");
  ReadFile("/proc/self/mountinfo");
  ReadVolumeLinks();
  ReadFile("/sys/class/dmi/id/product_serial");
  ReadFile("/sys/class/dmi/id/board_serial");
  ReadAdapters();
}

}  // namespace bench
