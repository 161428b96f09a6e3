// Which network adapter's address stands for the machine, and what the log tells of the choice.

#include "support/failing_allocation.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using enum PlatformCall;

const std::string kVpn = "{VPN}: 02:00:00:00:00:01: Tunnel\n";
const std::string kNic = "{NIC}: 00:1a:2b:c3:d4:0f: Onboard\n";
const std::string kAll = "[Debug] Network Adapters List:\n\n";
const std::string kPci = "[Debug] PCI Network Adapters List:\n\n";
const std::string kFound = "[Debug] Find PCI MAC-Address: 00:1a:2b:c3:d4:0f for {NIC}";
const std::string kNoPci = "[Debug] Cannot find PCI MAC-Address #1. Return first found adapter";
const std::string kOtherPci = "[Debug] Cannot find PCI MAC-Address #2. Return first found adapter";
const std::string kWmi =
    "[Debug] WMI property \"MACAddress\" FOR CLASS \"Win32_NetworkAdapterConfiguration WHERE "
    "IPEnabled = TRUE\" = \"00:50:56:c0:00:01\"";

class AdaptersTest : public MachineTest {
 protected:
  // Behind its last other value format 1.5 logs `choice` and nothing else, and takes the address.
  static void Expect(const std::string& choice) {
    Reply reply;
    const std::string address = choice.ends_with(kFound) ? "00:1a:2b:c3:d4:0f"
                                : choice.ends_with(kWmi) ? "00:50:56:c0:00:01"
                                                         : "02:00:00:00:00:01";
    EXPECT_EQ(CollectString({1, 5}, &reply.log), "1234abcdpf0xyzboard7" + address);
    EXPECT_THAT(Join(reply.Lines()), testing::EndsWith("= \"board7\"" + choice));
  }

  const NetworkAdapter vpn = pc.adapters[0], nic = pc.adapters[1];
};

TEST_F(AdaptersTest, OnlyTheFirstPciAdapterWithAnIdCounts) {
  pc.pci_devices = {{true, "{NIC}", "Name", "Kind"}, {true, "{VPN}", {}, "Kind"}};
  Expect(kAll + kVpn + kNic + kPci + "Name: {NIC}\nKind: {VPN}\n" + kFound);
  pc.pci_devices = {{true, "{nic}", "Name", {}}, {true, "{NIC}", {}, {}}};
  Expect(kAll + kVpn + kNic + kPci + "Name: {nic}\n{NIC}: {NIC}\n" + kOtherPci);
  pc.pci_devices = {{false, "{VPN}", "A", {}}, {true, {}, "B", {}}, {true, "", "C", {}}};
  Expect(kAll + kVpn + kNic + kPci + kNoPci);
  pc.pci_devices.push_back({true, "{NIC}", "Name", {}});
  Expect(kAll + kVpn + kNic + kPci + "Name: {NIC}\n" + kFound);
  pc.Fail(kSetupDiGetClassDevs, 5);
  Expect(kAll + kVpn + kNic + "[Debug] SetupDiGetClassDevs failed" + kNoPci);
  pc.adapters = {{"", "", {}}, {"{VPN}", "", {}}, nic, vpn};  // First name, its last address.
  const std::string unknown = ": 00:00:00:00:00:00: \n";
  Expect(kAll + unknown + "{VPN}" + unknown + kNic + kVpn + "[Debug] SetupDiGetClassDevs failed" +
         kNoPci);
}

TEST_F(AdaptersTest, ATextMayFillItsFieldAndHaveNoTerminator) {
  const std::string full(260, 'n');
  pc.adapters = {{full, std::string(132, 'd'), vpn.address}};
  pc.pci_devices = {{true, "{A long instance id}", "A longer name of the device", {}},
                    {true, "{B}", {}, {}}};
  Expect(kAll + full + ": 02:00:00:00:00:01: " + std::string(132, 'd') + '\n' + kPci +
         "A longer name of the device: {A long instance id}\n{B}: {B}\n" + kOtherPci);
}

TEST_F(AdaptersTest, WithoutAListTheAddressComesFromWmi) {
  // Only the second of two calls counts, which may fail when the list grows or is lost meanwhile.
  pc.At(kGetAdaptersInfo, "", [&] { pc.adapters.push_back(nic); });
  Expect("[Debug] GetAdaptersInfo failed with code = 111" + kWmi);
  pc.At(kGetAdaptersInfo, "", [&] { pc.adapters.clear(); });
  Expect("[Debug] GetAdaptersInfo failed with code = 232" + kWmi);
  pc.adapters = {vpn};
  int calls = 0;
  pc.At(kGetAdaptersInfo, "", [&] { ++calls == 1 ? pc.Fail(kGetAdaptersInfo, 5) : pc.Recover(); });
  Expect(kAll + kVpn + kPci + "Gigabit Adapter: {NIC}\n" + kOtherPci);

  pc.adapters = {vpn, nic};
  std::optional<FailingMalloc> failing;
  pc.At(kGetAdaptersInfo, "", [&] { failing.emplace(1); });
  Expect("[Debug] Cannot allocate memory #2" + kWmi);
  int values = 0;  // Of which the third comes last, and takes memory for its text first.
  pc.At(kGet, "", [&] { failing.emplace(++values == 3 ? 2 : 0); });
  Expect("[Debug] Cannot allocate memory #1" + kWmi);
}

}  // namespace
}  // namespace system_info
