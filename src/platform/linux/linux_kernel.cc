// The answers of the running kernel.

#include <fcntl.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <memory>

#include "platform/linux/linux_machine.h"
#include "platform/linux/out_of_resources.h"
#include "platform/linux/value_files.h"

namespace system_info {
namespace {

// As the kernel declares it from 6.9 on; the headers of the C library may be older than that.
struct FileSystemUuid {
  std::uint8_t length;
  std::uint8_t bytes[16];
};
constexpr unsigned long kGetFileSystemUuid = _IOR(0x15, 0, FileSystemUuid);

std::optional<std::array<std::uint8_t, 16>> GetFileSystemUuid(const std::string& path) {
  const Descriptor folder = OpenToRead(path, O_DIRECTORY);
  FileSystemUuid uuid = {};
  const bool answered = ioctl(folder.get(), kGetFileSystemUuid, &uuid) == 0;
  std::array<std::uint8_t, 16> bytes = {};
  if (!answered || uuid.length != bytes.size()) return std::nullopt;
  std::copy(std::begin(uuid.bytes), std::end(uuid.bytes), bytes.begin());
  return bytes;
}

std::set<std::string> ListInterfacesWithAddress() {
  std::set<std::string> names;
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    ThrowIfOutOfResources(errno, "addresses");
    return names;
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> addresses(first, freeifaddrs);
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr) continue;
    const int family = entry->ifa_addr->sa_family;
    if (family != AF_INET && family != AF_INET6) continue;
    // A label such as "eth0:1" names an address and not an interface of its own.
    const std::string label = entry->ifa_name;
    names.insert(label.substr(0, label.find(':')));
  }
  return names;
}

}  // namespace

KernelAnswers AskKernel() { return {GetFileSystemUuid, ListInterfacesWithAddress}; }

}  // namespace system_info
