// What the native build takes for the hardware of a computer, on made-up trees and recorded answers
// of the kernel.

#include "platform/linux/linux_machine.h"

#include <linux/if_addr.h>
#include <linux/magic.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "hardware/network_adapters.h"
#include "platform/linux/network_dump.h"
#include "support/failing_allocation.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

using Entries = std::vector<std::pair<std::string, std::string>>;

// An answer of the kernel as it arrives: a header, which begins with the size, and what it heads.
template <typename Header, typename Length>
std::string Piece(Header header, Length Header::*length, const std::string& body) {
  header.*length = static_cast<Length>(sizeof(header) + body.size());
  std::string piece(reinterpret_cast<const char*>(&header), sizeof(header));
  return (piece += body).append((4 - piece.size() % 4) % 4, '\0');
}

std::string Attribute(unsigned short type, const std::string& body) {
  return body.empty() ? "" : Piece(rtattr{0, type}, &rtattr::rta_len, body);
}

std::string Message(unsigned short type, const std::string& body, int flags = 0) {
  const auto all_flags = static_cast<unsigned short>(NLM_F_MULTI | flags);
  return Piece(nlmsghdr{0, type, all_flags, 0, 0}, &nlmsghdr::nlmsg_len, body);
}

std::string End(unsigned short type, int error) {
  return Message(type, std::string(reinterpret_cast<const char*>(&error), sizeof(error)));
}

std::string AddressBytes(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 3) {
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string Hexadecimal(unsigned long number) {
  char text[20];
  std::snprintf(text, sizeof(text), "%lx", number);
  return text;
}

struct Nic {
  std::string name;
  unsigned flags;
  std::string address;
  std::string origin;
  std::string permanent_address;
  std::string device;  // Below /sys/devices.

  std::string Listed(int index, bool with_permanent_address) const {
    ifinfomsg about = {};
    about.ifi_index = index;
    about.ifi_flags = flags;
    std::string body(reinterpret_cast<const char*>(&about), sizeof(about));
    body += Attribute(IFLA_IFNAME, name + '\0') + Attribute(IFLA_ADDRESS, AddressBytes(address));
    if (with_permanent_address) {
      body += Attribute(IFLA_PERM_ADDRESS, AddressBytes(permanent_address));
      body += Attribute(IFLA_PERM_ADDRESS + 4, "newer");
    }
    return Message(RTM_NEWLINK, body);
  }
};

std::string AddressOf(unsigned index, int family) {
  ifaddrmsg about = {};
  about.ifa_family = static_cast<unsigned char>(family);
  about.ifa_index = index;
  return Message(RTM_NEWADDR, {reinterpret_cast<const char*>(&about), sizeof(about)});
}

class LinuxMachineTest : public MachineTest {
 protected:
  LinuxMachineTest() { SetPresentMachine(&machine); }

  // A value that begins with "->" is the target of a link, and "/" stands for a folder.
  void Make(const Entries& entries) {
    for (const auto& [path, value] : entries) {
      if (!value.starts_with("->") && value != "/") {
        WriteFileText(root + path, value);
        continue;
      }
      fs::create_directories(root + (value == "/" ? path : fs::path(path).parent_path().string()));
      if (value != "/") fs::create_symlink(value.substr(2), root + path);
    }
  }

  void MakeFolder(const Nic& nic, int index) {
    const std::string folder = "/sys/class/net/" + nic.name;
    Make({{folder + "/ifindex", std::to_string(index) + '\n'},
          {folder + "/flags", "0x" + Hexadecimal(nic.flags) + '\n'},
          {folder + "/addr_assign_type", nic.origin + '\n'},
          {folder + "/address", nic.address + '\n'}});
    if (!nic.device.empty()) Make({{folder + "/device", "->../../../devices/" + nic.device}});
  }

  // Begins anew, with nothing to read and no answer of the kernel.
  void Clear() {
    fs::remove_all(root);
    Make({{"/var/lib", "/"}});
    at_root = {};
    dumps.clear();
    permanent_addresses.clear();
  }

  // What the given format is made of here, and the log of it in `log`.
  std::string Read(HidFormatVersion version) { return CollectString(version, &log); }

  const std::string root = *pc.common_root;
  FileSystem at_root;
  std::map<int, std::vector<std::vector<std::string>>> dumps;  // What is left to answer, in parts.
  std::map<std::string, MacAddress> permanent_addresses;
  LinuxMachine machine{root,
                       {[this](auto&) { return at_root; },
                        [this](int question, const TakeDump& take) {
                          auto& answers = dumps[question];
                          if (answers.empty()) return;
                          for (const std::string& part : answers.front()) {
                            if (!take(part)) break;
                          }
                          if (answers.size() > 1) answers.erase(answers.begin());
                        },
                        [this](const std::string& name) -> std::optional<MacAddress> {
                          const auto found = permanent_addresses.find(name);
                          if (found == permanent_addresses.end()) return std::nullopt;
                          return found->second;
                        }}};
  std::string log;
};

const std::string kDmi = "/sys/class/dmi/id/", kMounts = "/proc/self/mountinfo";
const std::string kRoot = "25 1 8:1 / / rw - ext4 /dev/sda1 rw\n";

TEST_F(LinuxMachineTest, SerialNumbersAreThoseOfFirmwareAndSystem) {
  // What there is, and the values of format 1.1 that come of it.
  const std::tuple<Entries, std::string> computers[] = {
      {{{kDmi + "product_uuid", "4C4C-"},
        {kDmi + "product_serial", " PF0XYZ \n\n"},
        {kDmi + "board_serial", "BOARD7\n"},
        {"/sys/firmware/devicetree/base/serial-number", "unused"},
        {"/etc/machine-id", "01\n"}},
       "4c4c-01 pf0xyz \nboard7"},
      // Not for everybody: what cannot be read is not there.
      {{{kDmi + "product_uuid", "/"}, {kDmi + "board_serial", "/"}, {"/etc/machine-id", "id"}},
       "id"},
      {{{kDmi + "product_uuid", "0000-0000\n"}, {kDmi + "board_serial", "\n"}}, ""},
      {{{"/sys/firmware/devicetree/base/serial-number", std::string("10000abc\0", 9)}}, "10000abc"},
      {{{"/sys/firmware/devicetree/base/serial-number", std::string("\0", 1)}}, ""},
      {{{"/etc/machine-id", "uninitialized\n"}, {"/var/lib/dbus/machine-id", "bus"}}, "bus"},
      {{{"/etc/machine-id", "\n"}, {"/var/lib/dbus/machine-id", "0000"}}, ""},
      // A name for one boot, which hides that of the disk, by either path.
      {{{"/etc/machine-id", "etc"},
        {"/var/lib/dbus/machine-id", "->../../../etc/machine-id"},
        {kMounts, kRoot + "26 1 0:32 / /etc/machine-id rw - tmpfs b rw\n"}},
       ""},
      {{{"/etc/machine-id", "etc"}, {kMounts, kRoot + "26 1 0:32 / /etc/ma rw - tmpfs b rw\n"}},
       "etc"},
      // A container knows of the upper folder of its root only by name, unlike a live system.
      {{{"/etc/machine-id", "etc"},
        {kMounts,
         "25 1 0:9 / / rw - overlay o rw,upperdir=/run/up,workdir=/w\n"
         "26 1 0:32 / /run rw shared:1 - ramfs b rw\n"}},
       "etc"},
      {{{"/etc/machine-id", "etc"},
        {"/run/up/file", ""},
        {kMounts,
         "25 1 0:9 / / rw - overlay o rw,upperdir=/run/up,workdir=/w\n"
         "26 1 0:32 / /run rw shared:1 - ramfs b rw\n"}},
       ""},
      {{{"/etc/machine-id", "etc"},
        {"/disk/up/file", ""},
        {kMounts,
         "25 1 0:9 / / rw - overlay o rw,upperdir=/disk/up\n"
         "26 1 8:1 / /disk rw - ext4 b rw\n"}},
       "etc"}};
  for (const auto& [entries, values] : computers) {
    Clear();
    Make(entries);
    EXPECT_EQ(Read({1, 1}), values) << testing::PrintToString(entries);
  }
  at_root.type =
      RAMFS_MAGIC;  // All of it is lost with the next boot, and no list of mounts says so.
  fs::remove(root + kMounts);
  EXPECT_EQ(Read({1, 1}), "");
}

TEST_F(LinuxMachineTest, VolumeIsThatOfTheFileSystemAtTheRoot) {
  const std::string uuid = "01020304-0506-0708-090a-0b0c0d0e0fab";
  const auto bytes =
      std::array<std::uint8_t, 16>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xab};
  const std::string by_uuid = "/dev/disk/by-uuid/", udev = "/run/udev/data/b";
  const std::string number = "/sys/dev/block/", btrfs = "/sys/fs/btrfs/";
  const std::string on_two = "25 1 0:31 / / rw - btrfs /dev/sda2 rw\n";
  const Entries sda1 = {{kMounts, kRoot}, {number + "8:1", "->../../devices/block/sda/sda1"}};
  const auto with = [](Entries all, const Entries& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
  };
  // What the kernel answers, what there is, and the volume.
  const std::tuple<FileSystem, Entries, std::string> computers[] = {
      {{EXT4_SUPER_MAGIC, bytes}, with(sda1, {{by_uuid + "other", "->../../sda1"}}), uuid},
      {{XFS_SUPER_MAGIC, bytes}, {}, uuid},  // In a chroot.
      {{EXT4_SUPER_MAGIC, {{}}}, with(sda1, {{by_uuid + "other", "->../../sda1"}}), ""},
      // Kernels before 6.9, and file systems without such a UUID.
      {{},
       with(sda1, {{by_uuid + "b", "->../../sdb1"}, {by_uuid + "C0FF-EE", "->../../sda1"}}),
       "c0ff-ee"},
      {{}, with(sda1, {{by_uuid + "b", "->../../sdb1"}}), ""},
      {{}, with(sda1, {{by_uuid + "0000-", "->../../sda1"}}), ""},
      {{}, {{by_uuid + "b", "->../../sda1"}}, ""},
      // The link of a copy hides that of the root.
      {{},
       with(sda1,
            {{by_uuid + "same", "->../../sdb1"}, {udev + "8:1", "E:A=1\nE:ID_FS_UUID=same\n"}}),
       "same"},
      {{}, with(sda1, {{udev + "8:1", "E:ID_FS_UUID=a b\nE:ID_FS_UUID_ENC=a\\x20b"}}), "a\\x20b"},
      {{}, with(sda1, {{udev + "8:1", "S:disk\n"}, {by_uuid + "link", "->../../sda1"}}), "link"},
      // LVM or LUKS, by number and by source.
      {{},
       {{kMounts, "25 1 254:0 / / rw - xfs /dev/mapper/vg-root rw\n"},
        {number + "254:0", "->../../devices/virtual/block/dm-0"},
        {by_uuid + "luks", "->../../sda2"},
        {by_uuid + "fs", "->../../dm-0"}},
       "fs"},
      {{},
       {{kMounts, "25 1 0:31 / / rw - f2fs /dev/mapper/root rw\n"},
        {"/dev/mapper/root", "->../dm-0"},
        {by_uuid + "fs", "->../../dm-0"}},
       "fs"},
      // btrfs, on one device and on two, of which the link names the other.
      {{}, {{kMounts, on_two}, {by_uuid + "one", "->../../sda2"}}, "one"},
      {{},
       {{kMounts, on_two},
        {btrfs + "features/x", ""},
        {btrfs + "two/devices/sda2", "/"},
        {btrfs + "two/devices/sdb2", "/"},
        {by_uuid + "two", "->../../sdb2"}},
       "two"},
      {{},
       {{kMounts, on_two},
        {"/sys/class/block/sda2/dev", "8:2\n"},
        {udev + "8:2", "E:ID_FS_UUID=udev"}},
       "udev"},
      {{}, {{kMounts, kRoot}, {btrfs + "two/devices/sda1", "/"}}, ""},
      {{},
       {{kMounts, "25 1 0:40 / / rw - nfs4 host:/dev/sda2 rw\n"}, {by_uuid + "b", "->../../sda2"}},
       ""},
      // Made anew at each boot, whatever UUID the kernel draws for it.
      {{0, bytes}, {{kMounts, "25 1 0:9 / / rw - overlay o rw,upperdir=/disk/up\n"}}, ""},
      {{OVERLAYFS_SUPER_MAGIC, bytes}, {}, ""},
      {{0, bytes}, {{kMounts, kRoot + "26 25 0:30 / / rw - tmpfs t rw\n"}}, ""},
      {{TMPFS_MAGIC, bytes}, {}, ""},
      {{TMPFS_MAGIC, bytes}, {{kMounts, "no mount\n26 25 0:30 / /mnt rw - tmpfs t rw\n"}}, ""}};
  for (const auto& [answer, entries, volume] : computers) {
    Clear();
    at_root = answer;
    Make(entries);
    EXPECT_EQ(Read({2, 0}), volume) << testing::PrintToString(entries);
  }
}

constexpr unsigned kUp = 0x1003, kDown = 0x1002;
const std::string kMac = "00:00:00:00:00:0";

// How the kernel tells of interfaces: in full, before 5.6, and not at all to a sandbox.
enum class Teller { kDump, kOldDump, kFolders };

TEST_F(LinuxMachineTest, AdaptersHaveTheAddressThatStays) {
  const Nic lo = {"lo", 0x9, kMac + "0", "0", "", ""};
  const Nic eth0 = {"eth0", kUp, kMac + "2", "0", kMac + "2", "pci0/0000:02:00.0"};
  const Nic eth1 = {"eth1", kDown, kMac + "1", "0", kMac + "1", "pci0/0000:0a:00.0"};
  const auto uses = [](Nic nic, const std::string& address, const std::string& origin) {
    nic.address = address;
    nic.origin = origin;
    return nic;
  };
  // The interfaces by index, the lines of the list, those of the PCI list, and the addresses that
  // format 1.5 and format 1.4 take.
  const std::string one = "eth0: " + kMac + "2: r8169\n", other = "eth1: " + kMac + "1: e1000e\n";
  const std::string pci_one = "r8169: eth0\n", pci_other = "e1000e: eth1\n";
  const std::tuple<std::vector<Nic>, std::string, std::string, std::string, std::string>
      networks[] = {
          {{lo, eth1, eth0}, other + one, pci_one + pci_other, kMac + "2", kMac + "1"},
          {{lo, {"ens3", kUp, kMac + "3", "0", kMac + "3", "pci0/0000:00:03.0/virtio0"}, eth0},
           "ens3: " + kMac + "3: virtio_net\n" + one,
           "virtio_net: ens3\n" + pci_one,
           kMac + "3",
           kMac + "3"},
          {{{"br0", kUp, kMac + "4", "3", "", ""},
            {"usb0", kUp, kMac + "5", "0", kMac + "5", "usb1/1-1"}},
           "br0: " + kMac + "4: \nusb0: " + kMac + "5: \n",
           "",
           kMac + "4",
           kMac + "5"},
          // Drawn at random: a bridge, and a cable into a container that does not say otherwise.
          {{{"br0", kUp, kMac + "4", "1", "", ""}, {"veth1", kUp, kMac + "5", "1", "", ""}, eth0},
           one,
           pci_one,
           kMac + "2",
           kMac + "2"},
          // In a bond all ports use the address of one of them, and so does a VLAN.
          {{uses(eth0, kMac + "1", "3"),
            uses(eth1, kMac + "1", "0"),
            {"bond0", kUp, kMac + "1", "2", "", ""},
            {"bond0.5", kUp, kMac + "1", "2", "", ""}},
           one + other + "bond0: " + kMac + "1: \nbond0.5: " + kMac + "1: \n",
           pci_one + pci_other,
           kMac + "2",
           kMac + "2"},
          // Wi-Fi that draws an address for each network, by user space or by the kernel.
          {{uses(eth0, "5e:00:00:00:00:0f", "3"), uses(eth1, "5e:00:00:00:00:0e", "1")},
           one + other,
           pci_one + pci_other,
           kMac + "2",
           kMac + "2"},
          // InfiniBand, and a tunnel without any address.
          {{{"ib0", kUp, kMac + "1:00:00", "0", kMac + "1:00:00", "pci0/0000:0a:00.0"},
            {"tun0", kUp, "", "0", "", ""},
            eth0},
           one,
           pci_one,
           kMac + "2",
           kMac + "2"}};
  for (const auto& [nics, list, pci_list, chosen, legacy] : networks) {
    for (const Teller teller : {Teller::kDump, Teller::kOldDump, Teller::kFolders}) {
      Clear();
      Make({{"/sys/devices/pci0/0000:02:00.0/driver", "->../../bus/pci/drivers/r8169"},
            {"/sys/devices/pci0/0000:02:00.0/subsystem", "->../../bus/pci"},
            {"/sys/devices/pci0/0000:0a:00.0/driver", "->../../bus/pci/drivers/e1000e"},
            {"/sys/devices/pci0/0000:0a:00.0/subsystem", "->../../bus/pci"},
            {"/sys/devices/pci0/0000:00:03.0/subsystem", "->../../bus/pci"},
            {"/sys/devices/pci0/0000:00:03.0/virtio0/driver", "->../../../bus/drivers/virtio_net"},
            {"/sys/devices/pci0/0000:00:03.0/virtio0/subsystem", "->../../../bus/virtio"},
            {"/sys/devices/usb1/1-1/subsystem", "->../../bus/usb"}});
      std::vector<std::string> parts = {End(NLMSG_DONE, 0)};
      for (std::size_t i = 0; i < nics.size(); ++i) {
        const int index = static_cast<int>(i) + 1;
        MakeFolder(nics[i], index);
        parts.insert(parts.begin(), nics[i].Listed(index, teller == Teller::kDump));
        const std::string permanent = AddressBytes(nics[i].permanent_address);
        if (permanent.size() == 6)
          permanent.copy(reinterpret_cast<char*>(permanent_addresses[nics[i].name].data()), 6);
      }
      if (teller != Teller::kFolders) dumps[RTM_GETLINK] = {parts};
      EXPECT_EQ(Read({1, 5}), chosen) << list;
      EXPECT_THAT(log, HasSubstr("Network Adapters List:\n\n" + list + "\n"))
          << static_cast<int>(teller);
      EXPECT_THAT(log, HasSubstr("PCI Network Adapters List:\n\n" + pci_list + "\n"));
      EXPECT_EQ(Read({1, 4}), legacy);
    }
  }
}

TEST_F(LinuxMachineTest, TheKernelsListCountsOnlyWhole) {
  const Nic nic = {"eth0", kUp, kMac + "2", "0", kMac + "2", ""};
  const Nic other = {"eth1", kUp, kMac + "7", "0", kMac + "7", ""};
  const std::string listed = nic.Listed(1, true), done = End(NLMSG_DONE, 0);
  std::string interrupted =
      Message(RTM_NEWLINK, other.Listed(1, true).substr(sizeof(nlmsghdr)), NLM_F_DUMP_INTR);
  interrupted += done;
  // What the kernel answers, and the address that comes of it; that of the folder is in use.
  const std::pair<std::vector<std::vector<std::string>>, std::string> answers[] = {
      {{{listed + done}}, kMac + "2"},
      {{{listed, done}}, kMac + "2"},
      {{{Message(NLMSG_NOOP, ""), listed + Message(RTM_NEWADDR, "odd") + done}}, kMac + "2"},
      {{{interrupted}, {interrupted}, {listed + done}}, kMac + "2"},
      {{{interrupted}}, kMac + "3"},  // For ever.
      {{{listed}}, kMac + "3"},
      {{{listed, done.substr(0, 10)}}, kMac + "3"},
      {{{listed.substr(0, listed.size() - 8)}}, kMac + "3"},
      {{{listed + std::string(16, '\0')}}, kMac + "3"},
      {{{listed + End(NLMSG_DONE, -EPERM)}}, kMac + "3"},
      {{{End(NLMSG_ERROR, -EOPNOTSUPP)}}, kMac + "3"},
      {{{Message(RTM_NEWLINK, "short") + done}}, kMac + "3"},
      {{{Nic{"veth", kUp, kMac + "9", "1", "", ""}.Listed(1, true) + done}}, kMac + "3"}};
  MakeFolder({"eth0", kUp, kMac + "3", "0", "", ""}, 1);
  Make({{"/sys/class/net/bonding_masters", "\n"}});
  for (const auto& [answer, address] : answers) {
    dumps[RTM_GETLINK] = answer;
    EXPECT_EQ(Read({1, 5}), address);
  }
  // An interface that the kernel lists for this process is not another one of the same name.
  dumps[RTM_GETLINK] = {{Nic{"eth0", kUp, "", "0", "", ""}.Listed(1, true) + done}};
  EXPECT_EQ(Read({1, 5}), "");
  for (const int error : {ENOMEM, ENOBUFS}) {
    dumps[RTM_GETLINK] = {{End(NLMSG_ERROR, -error)}};
    EXPECT_THROW(Read({1, 5}), std::runtime_error);
  }
}

TEST_F(LinuxMachineTest, IpEnabledMeansUpAndWithAnAddress) {
  std::string list, addresses = AddressOf(1, AF_PACKET) + AddressOf(2, AF_INET);
  const unsigned flags[] = {kUp, kDown, kUp, kUp};
  for (int i = 0; i < 4; ++i) {
    const std::string mac = kMac + std::to_string(i);
    list += Nic{"eth" + std::to_string(i), flags[i], mac, "0", mac, ""}.Listed(i + 1, true);
  }
  dumps[RTM_GETLINK] = {{list + End(NLMSG_DONE, 0)}};
  const auto rows = [this] {
    return machine.LookAtHardware()->QueryWmi(
        L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE");
  };
  for (const int family : {AF_INET, AF_INET6}) {
    EXPECT_TRUE(rows().empty());
    dumps[RTM_GETADDR] = {{addresses + AddressOf(4, family) + End(NLMSG_DONE, 0)}};
    EXPECT_EQ(rows(), (std::vector<WmiRow>{{{L"MACAddress", L"00:00:00:00:00:03"}}}));
    dumps.erase(RTM_GETADDR);
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
  if (!list || !indexes) GTEST_SKIP() << "The kernel does not list interfaces for this process.";
  std::string by_kernel;
  for (const ListedInterface& listed : list->interfaces) {
    EXPECT_EQ(kernel.permanent_address(listed.name), listed.permanent_address);
    if (!listed.address) continue;
    const std::string folder = "/sys/class/net/" + listed.name;
    const std::string address = FormatMacAddress(listed.address->data());
    const bool is_loopback = (listed.flags & IFF_LOOPBACK) != 0;
    EXPECT_EQ(address + '\n', ReadFileText(folder + "/address"));
    if (!is_loopback && ReadFileText(folder + "/addr_assign_type") == "0\n") {
      EXPECT_EQ(listed.permanent_address, listed.address);
    }
    by_kernel += std::to_string(listed.index) + ' ' + listed.name +
                 ((listed.flags & IFF_UP) != 0 ? " up " : " down ") +
                 (is_loopback ? "loopback " : "ether ") + address + '\n';
  }
  EXPECT_EQ(
      by_kernel,
      OutputOf("ip -o link | sed -E 's/<.*[<,]UP[,>]/up </; t up; s/</down </; :up' | sed -En "
               "'s/^([0-9]+): ([^:@]+)[^ ]* (up|down) .* link.(ether|loopback) "
               "([0-9a-f:]{17}) .*/\\1 \\2 \\3 \\4 \\5/p'"));
  std::string with_address;
  for (const long index : std::set(indexes->begin(), indexes->end())) {
    with_address += std::to_string(index) + '\n';
  }
  EXPECT_EQ(with_address, OutputOf("ip -o address | sed 's/:.*//' | sort -nu"));
}

TEST(Kernel, TellsOfFileSystems) {
  for (const std::string path : {"/", "/dev/shm"}) {
    const FileSystem found = AskKernel().file_system(path);
    EXPECT_EQ(Hexadecimal(found.type) + '\n', OutputOf("stat -f -c %t " + path));
    if (!found.uuid || found.type != TMPFS_MAGIC) continue;
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
  Make({{kDmi + "product_serial", "PF0XYZ"},
        {kDmi + "board_serial", "BOARD7"},
        {"/etc/machine-id", "id"},
        {kMounts, kRoot + "26 1 0:9 / /a rw - ext4 b rw\n"},
        {"/sys/class/net/eth/address", kMac + "2"}});
  setenv("XDG_DATA_HOME", root.c_str(), 1);
  LinuxMachine asks_kernel(root, AskKernel());
  SetPresentMachine(&asks_kernel);
  ASSERT_EQ(GetId("2.0").result, 0);
  const std::string id = pc.Common("device.idv2"), record = pc.Common("hid_settings");
  const long descriptors = CountDescriptors();
  int failures = 0;
  for (bool failed = true; failed; ++failures) {
    const auto stored = std::pair(ReadFileText(id), ReadFileText(record));
    FailingOpen failing(failures + 1);
    const Reply reply = Recheck("2.0");
    failed = failing.failed();
    EXPECT_EQ(reply.result, failed ? 3 : 0) << reply;
    if (!failed) break;
    EXPECT_THAT(reply.Lines().back(),
                testing::MatchesRegex("\\[Error. Error in RecheckHardwareId: .+: EMFILE, too many "
                                      "open files in the process"));
    EXPECT_EQ(std::pair(ReadFileText(id), ReadFileText(record)), stored);
  }
  EXPECT_GT(failures, 20);  // Of two collections.
  EXPECT_EQ(CountDescriptors(), descriptors);
}

TEST_F(LinuxMachineTest, WithoutMemoryALookAtTheHardwareFails) {
  Make({{"/etc/machine-id", "id"}, {kMounts, kRoot}, {"/dev/disk/by-uuid/c0ffee", "->../../sda1"}});
  MakeFolder({"eth0", kUp, kMac + "2", "0", "", "pci0/0000:02:00.0"}, 1);
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
