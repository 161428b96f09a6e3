// What the native build takes for the hardware of a computer, on made-up trees.

#include "platform/linux/linux_machine.h"

#include <unistd.h>

#include <filesystem>

#include "support/scripted_machine.h"

namespace system_info {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class LinuxMachineTest : public MachineTest {
 protected:
  LinuxMachineTest() { SetPresentMachine(&machine); }

  void File(const std::string& path, const std::string& text) { WriteFileText(root + path, text); }
  void Link(const std::string& path, const std::string& target) {
    fs::create_directories(fs::path(root + path).parent_path());
    fs::create_symlink(target, root + path);
  }
  // Index, flags, origin of the address, address, and maybe a device below /sys/devices.
  void Nic(const std::string& name, const std::array<std::string, 4>& values,
           const std::string& device = "", const std::string& bus = "pci") {
    const std::string folder = "/sys/class/net/" + name;
    File(folder + "/ifindex", values[0]);
    File(folder + "/flags", values[1]);
    File(folder + "/addr_assign_type", values[2]);
    File(folder + "/address", values[3] + '\n');
    if (device.empty()) return;
    Link(folder + "/device", "../../../devices/" + device);
    Link("/sys/devices/" + device + "/subsystem", "../bus/" + bus);
  }
  // All values but the chosen adapter's address, of which `log` tells.
  std::string Read() { return CollectString({1, 5}, &log), CollectString({1, 1}); }

  const std::string root = *pc.common_root, mounts = "/proc/self/mountinfo";
  std::optional<std::array<std::uint8_t, 16>> uuid;
  const std::set<std::string> with_address = {"veth", "usb", "eth1"};
  LinuxMachine machine{root, {[this](auto&) { return uuid; }, [this] { return with_address; }}};
  std::string log;
};

TEST_F(LinuxMachineTest, Desktop) {
  File("/sys/class/dmi/id/product_uuid", "4C4C-");
  File("/sys/class/dmi/id/product_serial", " PF0XYZ \n\n");
  File("/sys/class/dmi/id/board_serial", "BOARD7\n");
  File("/sys/firmware/devicetree/base/serial-number", "unused");
  File("/etc/machine-id", "01\n");
  uuid = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xab};
  Nic("lo", {"1", "0x9", "0", "00:00:00:00:00:01"});
  Nic("veth", {"2", "0x1003", "1", "00:00:00:00:00:02"});
  Nic("ib", {"3", "0x1003", "0", "00:00:00:00:00:03:00:00"});
  Nic("br", {"5", "0x1003", "0", "00:00:00:00:00:05"});
  Nic("usb", {"6", "0x1002", "0", "00:00:00:00:00:06"}, "usb1/1-1", "usb");
  Nic("eth1", {"9", "0x1003", "0", "00:00:00:00:00:09"}, "pci0/0000:0a:00.0");
  Nic("eth0", {"10", "0x1003", "0", "00:00:00:00:00:0A"}, "pci0/0000:02:00.0");
  EXPECT_EQ(Read(), "4c4c-0101020304-0506-0708-090a-0b0c0d0e0fab pf0xyz \nboard700:00:00:00:00:06");
  EXPECT_THAT(log, HasSubstr("List:\n\nbr: 00:00:00:00:00:05: \nusb: 00:00:00:00:00:06: \n"
                             "eth1: 00:00:00:00:00:09: \neth0: 00:00:00:00:00:0a: \n\n"));
  EXPECT_THAT(log, HasSubstr("PCI Network Adapters List:\n\neth0: eth0\neth1: eth1\n\n"));
  EXPECT_EQ(machine.LookAtHardware()->QueryWmi(
                L"Win32_NetworkAdapterConfiguration WHERE IPEnabled = TRUE"),
            (std::vector<WmiRow>{{{L"MACAddress", L"00:00:00:00:00:09"}}}));
}

TEST_F(LinuxMachineTest, BoardWithoutDmi) {
  File("/sys/firmware/devicetree/base/serial-number", std::string("10000000abcdef01\0", 17));
  File("/var/lib/dbus/machine-id", "dbus");
  uuid.emplace().fill(0);
  for (const std::string id : {"uninitialized\n", "\n", "00000000\n", "etc"}) {
    File("/etc/machine-id", id);
    EXPECT_EQ(Read(), "10000000abcdef01" + (id == "etc" ? id : "dbus"));
  }
  fs::remove(root + "/var/lib/dbus/machine-id");
  Link("/var/lib/dbus/machine-id", "../../../etc/machine-id");
  File(mounts, "25 1 8:1 / / rw - ext4 a rw\n26 1 0:32 / /etc/machine-id rw - tmpfs b rw\n");
  EXPECT_EQ(Read(), "10000000abcdef01");
}

TEST_F(LinuxMachineTest, Container) {
  File(mounts,
       "25 1 0:99 / / rw - overlay overlay rw,upperdir=/run/upper,workdir=/run/work\n"
       "26 1 0:32 / /run rw shared:1 - tmpfs tmpfs rw\n");
  File("/etc/machine-id", "id");
  uuid.emplace().fill(1);
  EXPECT_EQ(Read(), "id");
  File("/run/upper/file", "as seen by whoever mounted the overlay");
  EXPECT_EQ(Read(), "");
}

TEST_F(LinuxMachineTest, VirtualMachine) {
  File("/sys/class/dmi/id/product_uuid", "0000-0000\n");
  File("/sys/class/dmi/id/board_serial", "\n");
  File(mounts, "25 1 254:1 / / rw,noatime shared:1 master:2 - ext4 /dev/root rw\n");
  Link("/sys/dev/block/254:1", "../../devices/virtio1/block/vda/vda1");
  Link("/dev/disk/by-uuid/other", "../../vdb");
  Link("/dev/disk/by-uuid/c0ffee-", "../../vda1");
  Link("/sys/devices/pci0/0000:00:03.0/subsystem", "../bus/pci");
  Nic("ens3", {"2", "0x1003", "0", "52:54:00:00:00:03"}, "pci0/0000:00:03.0/virtio0", "virtio");
  EXPECT_EQ(Read(), "c0ffee-52:54:00:00:00:03");
  EXPECT_THAT(log, HasSubstr("Find PCI MAC-Address: 52:54:00:00:00:03 for ens3"));
}

}  // namespace
}  // namespace system_info
