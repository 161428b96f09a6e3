// What the native build takes for the hardware of a computer, on made-up trees.

#include "platform/posix/linux_machine.h"

#include <unistd.h>

#include <filesystem>

#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::HasSubstr;

class LinuxMachineTest : public MachineTest {
 protected:
  LinuxMachineTest() { SetPresentMachine(&machine); }

  void File(const std::string& path, const std::string& text) { WriteFileText(root + path, text); }
  void Link(const std::string& path, const std::string& target) {
    std::filesystem::create_directories(std::filesystem::path(root + path).parent_path());
    std::filesystem::create_symlink(target, root + path);
  }
  // An interface on the device `device` below /sys/devices, if any.
  void Nic(const std::string& name, const std::string& index, const std::string& flags,
           const std::string& origin, const std::string& address, const std::string& device = "",
           const std::string& bus = "pci") {
    const std::string folder = "/sys/class/net/" + name;
    File(folder + "/ifindex", index);
    File(folder + "/flags", flags);
    File(folder + "/addr_assign_type", origin);
    File(folder + "/address", address + "\n");
    if (device.empty()) return;
    Link(folder + "/device", "../../../devices/" + device);
    Link("/sys/devices/" + device + "/subsystem", "../bus/" + bus);
  }
  // All values but the chosen adapter's address, of which `log` tells.
  std::string Read() { return CollectString({1, 5}, &log), CollectString({1, 1}); }

  const std::string root = *pc.common_root, mountinfo = "/proc/self/mountinfo";
  std::optional<std::array<std::uint8_t, 16>> uuid;
  std::set<std::string> with_address;
  LinuxMachine machine{root, {[this](auto&) { return uuid; }, [this] { return with_address; }}};
  std::string log;
};

TEST_F(LinuxMachineTest, Desktop) {
  File("/sys/class/dmi/id/product_uuid", "4C4C4544-0042-");
  File("/sys/class/dmi/id/product_serial", " PF0XYZ \n\n");
  File("/sys/class/dmi/id/board_serial", "BOARD7\n");
  File("/sys/firmware/devicetree/base/serial-number", "unused");
  File("/etc/machine-id", "0123456789\n");
  uuid = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xab};
  with_address = {"veth", "usb", "eth1"};
  Nic("lo", "1", "0x9", "0", "00:00:00:00:00:01");
  Nic("veth", "2", "0x1003", "1", "00:00:00:00:00:02");
  Nic("ib", "3", "0x1003", "0", "00:00:00:00:00:03:00:00");
  Nic("br", "5", "0x1003", "0", "00:00:00:00:00:05");
  Nic("usb", "6", "0x1002", "0", "00:00:00:00:00:06", "usb1/1-1", "usb");
  Nic("eth1", "9", "0x1003", "0", "00:00:00:00:00:09", "pci0/0000:0a:00.0");
  Nic("eth0", "10", "0x1003", "0", "00:00:00:00:00:0A", "pci0/0000:02:00.0");
  EXPECT_EQ(Read(),
            "4c4c4544-0042-012345678901020304-0506-0708-090a-0b0c0d0e0fab pf0xyz \nboard7"
            "00:00:00:00:00:06");
  EXPECT_THAT(log, HasSubstr("List:\n\nbr: 00:00:00:00:00:05: \nusb: 00:00:00:00:00:06: \n"
                             "eth1: 00:00:00:00:00:09: \neth0: 00:00:00:00:00:0a: \n\n"));
  EXPECT_THAT(log, HasSubstr("PCI Network Adapters List:\n\neth0: eth0\neth1: eth1\n\n"));
  EXPECT_EQ(machine.QueryWmi(L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"),
            (std::vector<WmiRow>{{{L"MACAddress", L"00:00:00:00:00:09"}}}));
}

TEST_F(LinuxMachineTest, BoardWithoutDmi) {
  File("/sys/firmware/devicetree/base/serial-number", std::string("10000000abcdef01\0", 17));
  File("/etc/machine-id", "0123456789");
  EXPECT_EQ(Read(), "10000000abcdef010123456789");
}

TEST_F(LinuxMachineTest, Container) {
  File(mountinfo, "25 1 0:99 / / rw - overlay overlay rw,upperdir=/run/upper,workdir=/run/work\n");
  Nic("eth0", "2", "0x1003", "1", "02:42:00:00:00:02");
  uuid.emplace().fill(0);
  EXPECT_EQ(Read(), "");
  EXPECT_THAT(log, HasSubstr("GetAdaptersInfo failed with code = 232"));
  uuid.emplace().fill(1);
  File(mountinfo,
       ReadFileText(root + mountinfo) + "26 1 0:32 / /run rw shared:1 - tmpfs tmpfs rw\n");
  EXPECT_EQ(Read(), "");
}

TEST_F(LinuxMachineTest, VirtualMachine) {
  File("/sys/class/dmi/id/product_uuid", "0000-0000\n");
  File("/sys/class/dmi/id/board_serial", "\n");
  File(mountinfo, "25 1 254:1 / / rw,noatime shared:1 master:2 - ext4 /dev/root rw\n");
  Link("/dev/disk/by-uuid/other", "../../vdb");
  Link("/dev/disk/by-uuid/c0ffee-", "../../vda1");
  Link("/sys/devices/pci0/0000:00:03.0/subsystem", "../bus/pci");
  Nic("ens3", "2", "0x1003", "0", "52:54:00:00:00:03", "pci0/0000:00:03.0/virtio0", "virtio");
  Link("/sys/dev/block/254:1", "../../devices/virtio1/block/vda/vda1");
  EXPECT_EQ(Read(), "c0ffee-52:54:00:00:00:03");
  EXPECT_THAT(log, HasSubstr("Find PCI MAC-Address: 52:54:00:00:00:03 for ens3"));
}

TEST_F(LinuxMachineTest, MachineId) {
  File("/var/lib/dbus/machine-id", "dbus");
  EXPECT_EQ(Read(), "dbus");
  for (const char* useless : {"uninitialized\n", "\n", "00000000\n"}) {
    File("/etc/machine-id", useless);
    EXPECT_EQ(Read(), "dbus");
  }
  File("/etc/machine-id", "etc");
  EXPECT_EQ(Read(), "etc");
  std::filesystem::remove(root + "/var/lib/dbus/machine-id");
  Link("/var/lib/dbus/machine-id", "../../../etc/machine-id");
  File(mountinfo, "25 1 8:1 / / rw - ext4 a rw\n26 1 0:32 / /etc/machine-id rw - tmpfs b rw\n");
  EXPECT_EQ(Read(), "");
}

TEST_F(LinuxMachineTest, UserFolderIsOneOfTheUser) {
  const std::string home = root + "/home/.local/share", own = root + "/data";
  const std::string foreign = root + "/foreign";
  std::filesystem::create_directory(foreign);
  const bool given_away = chown(foreign.c_str(), 4711, 4711) == 0;  // Only root can.
  setenv("HOME", (root + "/home").c_str(), 1);
  unsetenv("XDG_DATA_HOME");
  EXPECT_EQ(machine.UserRoot(), home);
  for (const auto& [value, folder] : std::map<std::string, std::string>{
           {".", home}, {own, own}, {foreign, given_away ? home : foreign}}) {
    setenv("XDG_DATA_HOME", value.c_str(), 1);
    EXPECT_EQ(machine.UserRoot(), folder) << value;
    EXPECT_TRUE(std::filesystem::is_directory(folder)) << value;
  }
}

}  // namespace
}  // namespace system_info
