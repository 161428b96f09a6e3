// What the native build takes for the hardware of a computer, on made-up trees and recorded answers
// of the kernel.

#include "platform/linux/linux_machine.h"

#include <linux/if_addr.h>
#include <linux/magic.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/statvfs.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "hardware/network_adapters.h"
#include "platform/linux/network_dump.h"
#include "support/failing_allocation.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using namespace std::string_literals;

template <typename Value>
std::string Bytes(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

// An answer of the kernel as it arrives: a header, which begins with the size, and what it heads.
template <typename Header, typename Length>
std::string Piece(Header header, Length Header::*length, const std::string& body) {
  header.*length = static_cast<Length>(sizeof(header) + body.size());
  const std::string piece = Bytes(header) + body;
  return piece + std::string((4 - piece.size() % 4) % 4, '\0');
}

std::string Attribute(unsigned short type, const std::string& body) {
  return body.empty() ? "" : Piece(rtattr{0, type}, &rtattr::rta_len, body);
}

std::string Message(unsigned short type, const std::string& body, unsigned short flags = 0) {
  return Piece(nlmsghdr{0, type, flags, 0, 0}, &nlmsghdr::nlmsg_len, body);
}

std::string End(unsigned short type, int error) { return Message(type, Bytes(error)); }

// An interface as a line of text: name, "up" or "down", the last digit of the address, its origin,
// and as far as there is one the last digit of the permanent address and the device below
// /sys/devices. A "+" behind a digit makes the address longer.
struct Nic {
  explicit Nic(const std::string& line) {
    std::string digit, permanent_digit;
    std::istringstream(line) >> name >> state >> digit >> origin >> permanent_digit >> device;
    address = Address(digit);
    if (permanent_digit != "-") permanent_address = Address(permanent_digit);
  }

  static std::string Address(const std::string& digit) {
    if (digit.empty() || digit == "-") return "";
    return "00:00:00:00:00:0" + digit.substr(0, 1) + (digit.size() > 1 ? ":00:00" : "");
  }
  static std::string AddressBytes(const std::string& text) {
    if (text.empty()) return "";
    return "\0\0\0\0\0"s + static_cast<char>(text[16] - '0') +
           std::string((text.size() - 17) / 3, 0);
  }

  unsigned Flags() const { return name == "lo" ? 0x9U : state == "up" ? 0x1003U : 0x1002U; }

  std::string Listed(int index, bool with_permanent_address = true,
                     unsigned short flags = 0) const {
    ifinfomsg about = {};
    about.ifi_index = index;
    about.ifi_flags = Flags();
    std::string body = Bytes(about) + Attribute(IFLA_IFNAME, name + '\0');
    body += Attribute(IFLA_ADDRESS, AddressBytes(address));
    if (with_permanent_address) {
      body += Attribute(IFLA_PERM_ADDRESS, AddressBytes(permanent_address));
      body += Attribute(IFLA_PERM_ADDRESS + 4, "newer");
    }
    return Message(RTM_NEWLINK, body, flags);
  }

  std::string name, state, address, origin, permanent_address, device;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

class LinuxMachineTest : public MachineTest {
 protected:
  LinuxMachineTest() { SetPresentMachine(&machine); }

  // Begins anew, with no answer of the kernel and with these entries between bars: "file=text",
  // "link>target" or "folder/".
  void Make(const std::string& entries) {
    fs::remove_all(root);
    fs::create_directories(root + "/var/lib");
    at_root = {};
    dumps.clear();
    permanent_addresses.clear();
    Add(entries);
  }
  void Add(const std::string& entries) {
    for (const std::string& entry : Split(entries, '|')) {
      const std::size_t end = entry.find_first_of("=>");
      const std::string path = root + entry.substr(0, end);
      fs::create_directories(fs::path(path).parent_path());
      if (end == std::string::npos) continue;
      if (entry[end] == '=') WriteFileText(path, entry.substr(end + 1));
      if (entry[end] == '>') fs::create_symlink(entry.substr(end + 1), path);
    }
  }
  void AddFolder(const Nic& nic, int index) {
    const std::string folder = "/sys/class/net/" + nic.name;
    std::stringstream entries;
    entries << folder << "/flags=0x" << std::hex << nic.Flags() << std::dec << "\n|" << folder
            << "/ifindex=" << index << "\n|" << folder << "/addr_assign_type=" << nic.origin
            << "\n|" << folder << "/address=" << nic.address << '\n';
    Add(entries.str() +
        (nic.device.empty() ? "" : "|" + folder + "/device>../../../devices/" + nic.device));
  }

  // What the given format is made of here, and the log of it in `log`.
  std::string Read(HidFormatVersion version) { return CollectString(version, &log); }

  void Answer(int question, const TakeDump& take) {
    auto& answers = dumps[question];
    if (answers.empty()) return;
    for (const std::string& part : answers.front()) {
      if (!take(part)) break;
    }
    if (answers.size() > 1) answers.erase(answers.begin());
  }

  const std::string root = *pc.common_root;
  FileSystem at_root;
  std::map<int, std::vector<std::vector<std::string>>> dumps;  // What is left to answer, in parts.
  std::map<std::string, std::optional<MacAddress>> permanent_addresses;
  LinuxMachine machine{root,
                       {[this](auto&) { return at_root; },
                        [this](int question, auto& take) { Answer(question, take); },
                        [this](auto& name) { return permanent_addresses[name]; }}};
  std::string log;
};

const std::string kMounts = "|/proc/self/mountinfo=",
                  kRoot = kMounts + "25 1 8:1 / / rw - ext4 /dev/sda1 rw\n";

// The bytes that a text with the escapes of C stands for.
std::string Unescaped(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped = text[i] == '\\';
    if (escaped) ++i;
    if (escaped && text[i] == 'x') {
      bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      bytes += escaped && text[i] == 'n' ? '\n' : text[i];
    }
  }
  return bytes;
}

// "TYPE UUID", both as the kernel tells them.
FileSystem FileSystemOf(const std::string& type, const std::string& uuid) {
  static const std::map<std::string, std::uint32_t> kTypes = {
      {"ext4", EXT4_SUPER_MAGIC}, {"xfs", XFS_SUPER_MAGIC}, {"overlayfs", OVERLAYFS_SUPER_MAGIC},
      {"tmpfs", TMPFS_MAGIC},     {"ramfs", RAMFS_MAGIC},   {"unknown", 0}};
  FileSystem found;
  found.type = kTypes.at(type);
  std::string digits = uuid;
  std::erase(digits, '-');
  if (digits.empty()) return found;
  found.uuid.emplace();
  for (std::size_t i = 0; i < found.uuid->size(); ++i) {
    found.uuid->at(i) = static_cast<std::uint8_t>(std::stoi(digits.substr(2 * i, 2), nullptr, 16));
  }
  return found;
}

TEST_F(LinuxMachineTest, HasTheSerialNumbersAndTheVolumeOfTheComputersInTheList) {
  std::ifstream list(DEVICEID_SOURCE_DIR "/tests/linux_computers.txt");
  std::string title;
  for (std::string line; std::getline(list, line);) {
    std::istringstream words(line);
    std::string verb, what, text;
    words >> verb >> what;
    std::getline(words.ignore(), text);
    if (verb == "==") {
      Make("");
      title = line;
    } else if (verb == "kernel") {
      at_root = FileSystemOf(what, text);
    } else if (verb == "file") {
      WriteFileText(root + what, Unescaped(text));
    } else if (verb == "link") {
      Add(what + ">" + text);
    } else if (verb == "folder") {
      fs::create_directories(root + what);
    } else if (verb == "reads") {
      EXPECT_EQ(Read(HidFormatVersion(what)), Unescaped(text)) << title;
    } else {
      EXPECT_TRUE(line.empty() || verb == "#") << line;
    }
  }
  EXPECT_FALSE(title.empty());
}

TEST_F(LinuxMachineTest, ALongLineInTheListOfMountsHidesNoneBehindIt) {
  Make("/etc/machine-id=etc" + kMounts + std::string(5000, 'x') +
       "\n1 1 0:9 / /etc rw - tmpfs b rw\n");
  EXPECT_EQ(Read({1, 1}), "");
}

const std::string kDevices =
    "|/sys/devices/pci0/0000:02:00.0/driver>../../bus/pci/drivers/r8169"
    "|/sys/devices/pci0/0000:02:00.0/subsystem>../../bus/pci"
    "|/sys/devices/pci0/0000:0a:00.0/driver>../../bus/pci/drivers/e1000e"
    "|/sys/devices/pci0/0000:0a:00.0/subsystem>../../bus/pci"
    "|/sys/devices/pci0/0000:03:00.0/subsystem>../../bus/pci"
    "|/sys/devices/pci0/0000:03:00.0/virtio0/driver>../../../bus/drivers/virtio_net"
    "|/sys/devices/pci0/0000:03:00.0/virtio0/subsystem>../../../bus/virtio"
    "|/sys/devices/pci0/0000:04:00.0/subsystem>../../bus/pci"
    "|/sys/devices/usb1/1:1:1.0/subsystem>../../bus/usb";

// How the kernel tells of interfaces: in full, before 5.6, and not at all to a sandbox.
enum class Teller { kDump, kOldDump, kFolders };

TEST_F(LinuxMachineTest, AdaptersHaveTheAddressThatStays) {
  const std::string pci = " pci0/0000:0", r8169 = pci + "2:00.0|", e1000e = pci + "a:00.0|";
  // The interfaces by index, their list and that of those on the bus as they are logged, and the
  // digits of the addresses that the formats 1.5 and 1.4 take.
  const std::array<std::string, 4> networks[] = {
      {"lo up 0 0|eth1 down 1 0 1" + e1000e + "eth0 up 2 0 2" + r8169, "eth1 1 e1000e|eth0 2 r8169",
       "r8169: eth0\ne1000e: eth1\n", "21"},
      {"ens3 up 3 0 3" + pci + "3:00.0/virtio0|eth0 up 2 0 2" + r8169,
       "ens3 3 virtio_net|eth0 2 r8169", "r8169: eth0\nvirtio_net: ens3\n", "23"},
      {"br0 up 4 3|usb0 up 5 0 5 usb1/1:1:1.0", "br0 4 |usb0 5 ", "", "45"},
      {"eth2 up 6 0 6" + pci + "4:00.0", "eth2 6 ", "eth2: eth2\n", "66"},  // Without a driver.
      // Drawn at random: a bridge, and a cable into a container that does not say otherwise.
      {"br0 up 4 1|veth1 up 5 1|eth0 up 2 0 2" + r8169, "eth0 2 r8169", "r8169: eth0\n", "22"},
      // In a bond all ports use the address of one of them, and so does a VLAN.
      {"eth0 up 1 3 2" + r8169 + "eth1 up 1 0 1" + e1000e + "bond0 up 1 2|bond0.5 up 1 2",
       "eth0 2 r8169|eth1 1 e1000e|bond0 1 |bond0.5 1 ", "r8169: eth0\ne1000e: eth1\n", "22"},
      // Wi-Fi that draws an address for each network, by user space or by the kernel.
      {"wlan0 up 8 3 2" + r8169 + "wlan1 up 9 1 1" + e1000e, "wlan0 2 r8169|wlan1 1 e1000e",
       "r8169: wlan0\ne1000e: wlan1\n", "22"},
      // InfiniBand, and a tunnel without any address.
      {"ib0 up 1+ 0 1+" + e1000e + "tun0 up - 0|eth0 up 2 0 2" + r8169, "eth0 2 r8169",
       "r8169: eth0\n", "22"}};
  for (const auto& [lines, adapters, on_bus, chosen] : networks) {
    for (const Teller teller : {Teller::kDump, Teller::kOldDump, Teller::kFolders}) {
      Make(kDevices);
      std::vector<std::string> parts = {End(NLMSG_DONE, 0)};
      for (const std::string& line : Split(lines, '|')) {
        const Nic nic(line);
        const int index = static_cast<int>(parts.size());
        AddFolder(nic, index);
        parts.insert(parts.begin(), nic.Listed(index, teller == Teller::kDump));
        const std::string permanent = Nic::AddressBytes(nic.permanent_address);
        if (permanent.size() == 6)
          permanent.copy(reinterpret_cast<char*>(permanent_addresses[nic.name].emplace().data()),
                         6);
      }
      if (teller != Teller::kFolders) dumps[RTM_GETLINK] = {parts};
      std::string list = "] Network Adapters List:\n\n";
      for (const std::string& adapter : Split(adapters, '|')) {
        const std::vector<std::string> words = Split(adapter + " ", ' ');
        list += words[0] + ": " + Nic::Address(words[1]) + ": " + words.at(2) + '\n';
      }
      EXPECT_EQ(Read({1, 5}), Nic::Address(chosen.substr(0, 1)));
      EXPECT_THAT(log, HasSubstr(list.substr(2) + '\n')) << static_cast<int>(teller);
      EXPECT_THAT(log, HasSubstr("PCI Network Adapters List:\n\n" + on_bus + '\n'));
      EXPECT_EQ(Read({1, 4}), Nic::Address(chosen.substr(1)));
    }
  }
}

TEST_F(LinuxMachineTest, TheKernelsListCountsOnlyWhole) {
  const std::string listed = Nic("eth0 up 2 0 2").Listed(1), done = End(NLMSG_DONE, 0);
  const std::string interrupted = Nic("eth0 up 7 0 7").Listed(1, true, NLM_F_DUMP_INTR) + done;
  std::string gone = Nic("eth1 up 5 0 5").Listed(0);
  gone[offsetof(nlmsghdr, nlmsg_type)] = RTM_DELLINK;
  permanent_addresses["veth"] = MacAddress{9};  // As asked one by one, which is not needed here.
  // What the kernel answers, in parts and again and again, and the digit of the address that comes
  // of it: 3 is that of the folder.
  const std::pair<std::vector<std::vector<std::string>>, std::string> answers[] = {
      {{{listed + done}}, "2"},
      {{{listed, done}}, "2"},
      {{{Message(NLMSG_NOOP, "") + gone + listed + done}}, "2"},
      {{{interrupted}, {interrupted}, {listed + done}}, "2"},
      {{{interrupted}}, "3"},  // For ever.
      {{{listed}}, "3"},
      {{{listed, done.substr(0, 10)}}, "3"},
      {{{listed.substr(0, listed.size() - 8), done}}, "3"},
      {{{listed + std::string(16, '\0')}}, "3"},
      {{{listed + End(NLMSG_DONE, -EPERM)}}, "3"},
      {{{listed + End(NLMSG_ERROR, 0)}, {listed + done}}, "3"},
      {{{Message(RTM_NEWLINK, "short") + done}}, "3"},
      {{{Nic("veth up 9 1").Listed(1) + done}}, "3"},
      // This process has another interface of that name than the folder.
      {{{Nic("eth0 up -").Listed(1) + done}}, "-"}};
  AddFolder(Nic("eth0 up 3 0"), 1);
  Add("/sys/class/net/bonding_masters=\n");
  for (const auto& [answer, digit] : answers) {
    dumps[RTM_GETLINK] = answer;
    EXPECT_EQ(Read({1, 5}), Nic::Address(digit));
  }
  for (const int error : {ENOMEM, ENOBUFS}) {
    dumps[RTM_GETLINK] = {{End(NLMSG_ERROR, -error)}};
    EXPECT_THROW(Read({1, 5}), std::runtime_error);
  }
}

TEST_F(LinuxMachineTest, IpEnabledMeansUpAndWithAnAddress) {
  const auto has_address = [](unsigned index, int family) {
    return Message(RTM_NEWADDR,
                   Bytes(ifaddrmsg{static_cast<unsigned char>(family), 0, 0, 0, index}));
  };
  dumps[RTM_GETLINK] = {{Nic("a up 1 0 1").Listed(1) + Nic("b down 2 0 2").Listed(2) +
                         Nic("c up 3 0 3").Listed(3) + Nic("d up 4 0 4").Listed(4) +
                         End(NLMSG_DONE, 0)}};
  for (const int family : {AF_INET, AF_INET6, AF_PACKET}) {
    dumps[RTM_GETADDR] = {{has_address(1, AF_PACKET) + has_address(2, AF_INET) +
                           has_address(4, family) + End(NLMSG_DONE, 0)}};
    std::vector<WmiRow> expected = {{{L"MACAddress", L"00:00:00:00:00:04"}}};
    if (family == AF_PACKET) expected.clear();
    EXPECT_EQ(machine.LookAtHardware()->QueryWmi(
                  L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"),
              expected);
  }
}

std::string OutputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  pclose(pipe);
  return text;
}

// The running kernel, held against what other programs and files say.
TEST(Kernel, AnswersWhatFoldersAndProgramsSay) {
  const KernelAnswers kernel = AskKernel();
  const auto list = ListInterfacesOfKernel(kernel);
  const auto indexes = ListIndexesWithIpAddress(kernel);
  if (OutputOf("ip link").empty()) GTEST_SKIP() << "Without netlink, or without ip to compare.";
  ASSERT_TRUE(list && indexes);
  std::stringstream by_kernel, with_ip_address;
  for (const ListedInterface& listed : list->interfaces) {
    EXPECT_EQ(kernel.permanent_address(listed.name), listed.permanent_address);
    if (!listed.address) continue;
    const std::string folder = "/sys/class/net/" + listed.name;
    const unsigned long flags = std::stoul(ReadFileText(folder + "/flags"), nullptr, 16);
    EXPECT_EQ(listed.flags & (IFF_UP | IFF_LOOPBACK), flags & (IFF_UP | IFF_LOOPBACK));
    const bool is_permanent = ReadFileText(folder + "/addr_assign_type") == "0\n";
    if (is_permanent && (flags & IFF_LOOPBACK) == 0) {
      EXPECT_EQ(listed.permanent_address, listed.address);
    }
    by_kernel << listed.index << ' ' << listed.name << ' '
              << FormatMacAddress(listed.address->data()) << '\n';
  }
  for (const long index : std::set(indexes->begin(), indexes->end()))
    with_ip_address << index << '\n';
  EXPECT_EQ(by_kernel.str(), OutputOf("ip -o link | sed -En 's/^([0-9]+): ([^:@]+).* "
                                      "link.(ether|loopback) ([0-9a-f:]{17}) .*/\\1 \\2 \\4/p'"));
  EXPECT_EQ(with_ip_address.str(), OutputOf("ip -o address | sed 's/:.*//' | sort -nu"));
}

TEST(Kernel, TellsOfFileSystems) {
  for (const std::string path : {"/", "/dev/shm"}) {
    const FileSystem found = AskKernel().file_system(path);
    EXPECT_EQ(found.type, std::stoul(OutputOf("stat -f -c %t " + path), nullptr, 16));
    if (found.type != TMPFS_MAGIC) continue;
    const bool has_call =
        OutputOf("printf '6.9\\n%s\\n' $(uname -r) | sort -VC && echo new") == "new\n";
    ASSERT_EQ(found.uuid.has_value(), has_call);
    if (!has_call) continue;
    // The number that such a file system has for programs is made of its UUID.
    struct statvfs status = {};
    statvfs(path.c_str(), &status);
    std::uint64_t halves[2];
    std::memcpy(halves, found.uuid->data(), sizeof(halves));
    EXPECT_EQ(halves[0] ^ halves[1], status.f_fsid);
  }
}

long CountDescriptors() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// A host at its limit may ask again; an id that was given up for a value that seemed to be missing
// is lost.
TEST_F(LinuxMachineTest, WithoutDescriptorsTheCallFailsAndNothingIsStored) {
  Make(kRoot +
       "|/etc/machine-id=id|/sys/class/dmi/id/product_serial=PF0XYZ|/sys/class/net/a/flags=");
  setenv("XDG_DATA_HOME", root.c_str(), 1);
  LinuxMachine asks_kernel(root, AskKernel());
  SetPresentMachine(&asks_kernel);
  ASSERT_EQ(GetId("2.0").result, 0);
  const auto stored = [this] {
    return ReadFileText(root + "/var/lib/BrindleQuayWorks/device.idv2") +
           ReadFileText(root + "/var/lib/BrindleQuayWorks/hid_settings");
  };
  const long descriptors = CountDescriptors();
  int failures = 0;
  for (bool failed = true; failed; failures += failed ? 1 : 0) {
    const std::string before = stored();
    FailingCall failing(failures + 1, EMFILE);
    const Reply reply = Recheck("2.0");
    failed = failing.failed();
    EXPECT_EQ(reply.result, failed ? 3 : 0) << reply;
    if (!failed) break;
    EXPECT_THAT(
        reply.Lines().back(),
        testing::MatchesRegex(
            ".Error. Error in RecheckHardwareId: .+: EMFILE, too many open files in the process"));
    EXPECT_EQ(stored(), before);
  }
  EXPECT_GT(failures, 20);  // Of two collections.
  EXPECT_EQ(CountDescriptors(), descriptors);
}

TEST_F(LinuxMachineTest, ALookIsRepeatedIfInterruptedAndFailsWithoutMemoryOfTheKernel) {
  Make(kRoot + "|/etc/machine-id=id|/sys/class/net/a/flags=");
  LinuxMachine asks_kernel(root, AskKernel());
  SetPresentMachine(&asks_kernel);
  const std::string values = Read({1, 1});
  bool failed = true;
  for (int nth = 1; failed; ++nth) {
    const FailingCall interrupted(nth, EINTR);
    EXPECT_EQ(Read({1, 1}), values);
    failed = interrupted.failed();
  }
  failed = true;
  for (int nth = 1; failed; ++nth) {
    const FailingCall memory(nth, ENOMEM);
    try {
      asks_kernel.LookAtHardware();
      failed = false;
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(memory.failed(), failed);
  }
}

TEST_F(LinuxMachineTest, WithoutMemoryALookAtTheHardwareFails) {
  Make(kRoot + kDevices + "|/etc/machine-id=id|/dev/disk/by-uuid/c0ffee>../../sda1");
  AddFolder(Nic("eth0 up 2 0 - pci0/0000:02:00.0"), 1);
  for (int nth = 1;; ++nth) {
    FailingNew memory(nth, false);
    bool threw = false;
    try {
      machine.LookAtHardware();
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    ASSERT_EQ(threw, memory.failed()) << nth;
    if (!threw) break;
  }
}

}  // namespace
}  // namespace system_info
