#include "platform/linux/linux_kernel.h"

#include <fcntl.h>
#include <linux/ethtool.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/linux/out_of_resources.h"
#include "platform/linux/value_files.h"

namespace system_info {
namespace {

constexpr const char* kNetwork = "network interfaces";

// Declared by the kernel from 6.9 on; the headers of the C library may be older.
struct FileSystemUuid {
  std::uint8_t length;
  std::uint8_t bytes[16];
};
constexpr unsigned long kGetFileSystemUuid = _IOR(0x15, 0, FileSystemUuid);

// The most that the kernel sends at once.
constexpr std::size_t kLargestAnswer = 32768;

struct DumpRequest {
  nlmsghdr header;
  ifinfomsg about;
  rtattr filter_header;
  std::uint32_t filter;
};

// Like ethtool_perm_addr, but with an address of fixed size.
struct PermanentAddress {
  std::uint32_t command;
  std::uint32_t size;
  MacAddress address;
};

FileSystem GetFileSystem(const std::string& path) {
  FileSystem found;
  const Descriptor folder = OpenToRead(path, O_DIRECTORY);
  struct statfs status = {};
  if (RepeatInterrupted([&] { return fstatfs(folder.get(), &status); }) == 0) {
    found.type = static_cast<std::uint32_t>(status.f_type);
  }
  FileSystemUuid uuid = {};
  if (ioctl(folder.get(), kGetFileSystemUuid, &uuid) == 0 && uuid.length == sizeof(uuid.bytes)) {
    found.uuid.emplace();
    std::copy(std::begin(uuid.bytes), std::end(uuid.bytes), found.uuid->begin());
  }
  return found;
}

Descriptor OpenSocket(int family, int type) {
  const int number = socket(family, type | SOCK_CLOEXEC, 0);
  if (number < 0) ThrowIfOutOfResources(errno, kNetwork);
  return Descriptor(number);
}

bool SendRequest(const Descriptor& netlink, std::uint16_t question) {
  DumpRequest request = {};
  request.header.nlmsg_len = sizeof(request);
  request.header.nlmsg_type = question;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.about.ifi_family = AF_UNSPEC;
  request.filter_header.rta_len = sizeof(request.filter_header) + sizeof(request.filter);
  request.filter_header.rta_type = IFLA_EXT_MASK;
  request.filter = RTEXT_FILTER_SKIP_STATS;
  const auto sent =
      RepeatInterrupted([&] { return send(netlink.get(), &request, sizeof(request), 0); });
  if (sent < 0) ThrowIfOutOfResources(errno, kNetwork);
  return sent == sizeof(request);
}

void DumpNetwork(std::uint16_t question, const TakeDump& take) {
  const Descriptor netlink = OpenSocket(AF_NETLINK, SOCK_RAW);
  if (!netlink.valid() || !SendRequest(netlink, question)) return;
  const auto buffer = std::make_unique_for_overwrite<char[]>(kLargestAnswer);
  for (bool wants_more = true; wants_more;) {
    sockaddr_nl sender = {};
    socklen_t sender_size = sizeof(sender);
    const auto size = RepeatInterrupted([&] {
      return recvfrom(netlink.get(), buffer.get(), kLargestAnswer, MSG_TRUNC,
                      reinterpret_cast<sockaddr*>(&sender), &sender_size);
    });
    if (size < 0) ThrowIfOutOfResources(errno, kNetwork);
    if (size < 0 || static_cast<std::size_t>(size) > kLargestAnswer) return;
    const bool from_kernel = sender.nl_pid == 0;
    if (from_kernel) wants_more = take({buffer.get(), static_cast<std::size_t>(size)});
  }
}

std::optional<MacAddress> GetPermanentAddress(const std::string& name) {
  const Descriptor socket = OpenSocket(AF_UNIX, SOCK_DGRAM);
  PermanentAddress answer = {};
  answer.command = ETHTOOL_GPERMADDR;
  answer.size = sizeof(answer.address);
  ifreq request = {};
  name.copy(request.ifr_name, sizeof(request.ifr_name) - 1);
  request.ifr_data = reinterpret_cast<char*>(&answer);
  if (ioctl(socket.get(), SIOCETHTOOL, &request) != 0) {
    ThrowIfOutOfResources(errno, name.c_str());
    return std::nullopt;
  }
  if (answer.size != answer.address.size() || answer.address == MacAddress{}) {
    return std::nullopt;
  }
  return answer.address;
}

}  // namespace

KernelAnswers AskKernel() { return {GetFileSystem, DumpNetwork, GetPermanentAddress}; }

}  // namespace system_info
