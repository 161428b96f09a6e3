#include "platform/linux/network_dump.h"

#include <linux/if_addr.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/out_of_resources.h"

namespace system_info {
namespace {

// How often to repeat the request for a list that changes while the kernel writes it.
constexpr int kAttempts = 10;

template <typename Header>
struct Piece {
  Header header;
  std::string_view body;
};

template <typename Value>
std::optional<Value> FirstOf(std::string_view bytes) {
  Value value;
  if (bytes.size() < sizeof(value)) return std::nullopt;
  std::memcpy(&value, bytes.data(), sizeof(value));
  return value;
}

// Takes the first item from `bytes`: a header, whose member `length` includes the header, and its
// body, padded to a multiple of four bytes.
template <typename Header, typename Length>
std::optional<Piece<Header>> TakePiece(std::string_view& bytes, Length Header::*length) {
  const auto header = FirstOf<Header>(bytes);
  if (!header) return std::nullopt;
  const std::size_t size = (*header).*length;
  if (size < sizeof(Header) || size > bytes.size()) return std::nullopt;
  const Piece<Header> piece = {*header, bytes.substr(sizeof(Header), size - sizeof(Header))};
  bytes.remove_prefix(std::min(bytes.size(), (size + 3) / 4 * 4));
  return piece;
}

enum class Progress { kGoesOn, kComplete, kInterrupted, kRefused };

// Reads a dump, and calls `take` for the body of each message of `type`.
template <typename Take>
class DumpReader {
 public:
  DumpReader(std::uint16_t type, Take take) : type_(type), take_(take) {}

  // True if there is more to come.
  bool Read(std::string_view part) {
    progress_ = Progress::kGoesOn;
    while (progress_ == Progress::kGoesOn && !part.empty()) {
      const auto message = TakePiece(part, &nlmsghdr::nlmsg_len);
      progress_ = message ? ReadMessage(message->header, message->body) : Progress::kRefused;
    }
    return progress_ == Progress::kGoesOn;
  }

  Progress progress() const { return progress_; }

 private:
  Progress ReadMessage(const nlmsghdr& header, std::string_view body) {
    interrupted_ = interrupted_ || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
    if (header.nlmsg_type == type_) take_(body);
    if (header.nlmsg_type != NLMSG_DONE && header.nlmsg_type != NLMSG_ERROR) {
      return Progress::kGoesOn;
    }
    const int error = -FirstOf<int>(body).value_or(0);
    ThrowIfOutOfResources(error, "network interfaces");
    if (error != 0 || header.nlmsg_type == NLMSG_ERROR) return Progress::kRefused;
    return interrupted_ ? Progress::kInterrupted : Progress::kComplete;
  }

  std::uint16_t type_;
  Take take_;
  bool interrupted_ = false;
  Progress progress_ = Progress::kRefused;
};

// The result of `take` for the messages of type `answer` in the first complete dump.
template <typename Result, typename Take>
std::optional<Result> AskUntilComplete(const KernelAnswers& kernel, std::uint16_t question,
                                       std::uint16_t answer, Take take) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    Result result;
    DumpReader reader(answer, [&](std::string_view body) { take(result, body); });
    kernel.network_dump(question, [&](std::string_view part) { return reader.Read(part); });
    if (reader.progress() == Progress::kComplete) return result;
    if (reader.progress() != Progress::kInterrupted) return std::nullopt;
  }
  return std::nullopt;
}

std::optional<MacAddress> AddressIn(std::string_view bytes) {
  if (bytes.size() != sizeof(MacAddress)) return std::nullopt;
  return FirstOf<MacAddress>(bytes);
}

void TakeInterface(InterfaceList& list, std::string_view body) {
  const auto link = FirstOf<ifinfomsg>(body);
  if (!link) return;
  ListedInterface found;
  found.index = link->ifi_index;
  found.flags = link->ifi_flags;
  body.remove_prefix(sizeof(*link));
  while (const auto attribute = TakePiece(body, &rtattr::rta_len)) {
    const int type = attribute->header.rta_type & NLA_TYPE_MASK;
    if (type == IFLA_IFNAME) found.name = attribute->body.substr(0, attribute->body.find('\0'));
    if (type == IFLA_ADDRESS) found.address = AddressIn(attribute->body);
    if (type == IFLA_PERM_ADDRESS) found.permanent_address = AddressIn(attribute->body);
    // Later attributes show that the kernel reports permanent addresses, even for an interface
    // without one.
    if (type >= IFLA_PERM_ADDRESS) list.has_permanent_addresses = true;
  }
  list.interfaces.push_back(std::move(found));
}

}  // namespace

std::optional<InterfaceList> ListInterfacesOfKernel(const KernelAnswers& kernel) {
  return AskUntilComplete<InterfaceList>(kernel, RTM_GETLINK, RTM_NEWLINK, TakeInterface);
}

std::optional<std::vector<long>> ListIndexesWithIpAddress(const KernelAnswers& kernel) {
  const auto take = [](std::vector<long>& indexes, std::string_view body) {
    const auto address = FirstOf<ifaddrmsg>(body);
    const bool is_ip =
        address && (address->ifa_family == AF_INET || address->ifa_family == AF_INET6);
    if (is_ip) indexes.push_back(static_cast<long>(address->ifa_index));
  };
  return AskUntilComplete<std::vector<long>>(kernel, RTM_GETADDR, RTM_NEWADDR, take);
}

}  // namespace system_info
