// Which network adapter's address stands for the machine, and what the log tells of the choice.

#include "support/failing_allocation.h"
#include "support/scripted_machine.h"

namespace system_info {
namespace {

using enum PlatformCall;

const std::string kVpn = "{VPN}: 02:00:00:00:00:01: Tunnel\n";
const std::string kNic = "{NIC}: 00:1a:2b:c3:d4:0f: Onboard\n";
const std::string kFound = "Find PCI MAC-Address: 00:1a:2b:c3:d4:0f for {NIC}";
const std::string kNoPci = "Cannot find PCI MAC-Address #1. Return first found adapter";
const std::string kUnknownPci = "Cannot find PCI MAC-Address #2. Return first found adapter";

class AdaptersTest : public MachineTest {
 protected:
  // Format 1.5 takes this address, and `told` is what its log says of adapters.
  void Expect(const std::string& address, std::vector<std::string> told) {
    Reply reply;
    EXPECT_EQ(CollectString({1, 5}, &reply.log), "1234abcdpf0xyzboard7" + address) << reply;
    for (std::string& line : told) line.insert(0, "[Debug] ");
    const std::vector<std::string> lines = reply.Lines();
    EXPECT_EQ(std::vector(lines.begin() + 4, lines.end()), told) << reply;
  }
  void Expect(const std::string& choice, const std::string& adapters, const std::string& pci) {
    Expect(choice == kFound ? "00:1a:2b:c3:d4:0f" : "02:00:00:00:00:01",
           {"Network Adapters List:\n\n" + adapters,
            pci == "none" ? "SetupDiGetClassDevs failed" : "PCI Network Adapters List:\n\n" + pci,
            choice});
  }
  void ExpectWmi(const std::string& line) {
    Expect("00:50:56:c0:00:01",
           {line,
            "WMI property \"MACAddress\" FOR CLASS \"Win32_NetworkAdapterConfiguration WHERE "
            "IPEnabled = TRUE\" = \"00:50:56:c0:00:01\""});
  }

  const NetworkAdapter vpn = pc.adapters[0], nic = pc.adapters[1];
};

TEST_F(AdaptersTest, OnlyTheFirstPciAdapterWithAnIdCounts) {
  pc.pci_devices = {{true, "{NIC}", "Name", "Kind"}, {true, "{VPN}", {}, "Kind"}};
  Expect(kFound, kVpn + kNic, "Name: {NIC}\nKind: {VPN}\n");
  pc.pci_devices = {{true, "{nic}", "Name", {}}, {true, "{NIC}", {}, {}}};
  Expect(kUnknownPci, kVpn + kNic, "Name: {nic}\n{NIC}: {NIC}\n");
  pc.pci_devices = {{false, "{VPN}", "A", {}}, {true, {}, "B", {}}, {true, "", "C", {}}};
  Expect(kNoPci, kVpn + kNic, "");
  pc.pci_devices.push_back({true, "{NIC}", "Name", {}});
  Expect(kFound, kVpn + kNic, "Name: {NIC}\n");
  pc.Fail(kSetupDiGetClassDevs, 5);
  Expect(kNoPci, kVpn + kNic, "none");
}

TEST_F(AdaptersTest, TheFirstNameAndTheLastAddressOfANameCount) {
  pc.adapters = {{"{NIC}", "Old", {}}, nic};
  Expect(kFound, "{NIC}: 00:00:00:00:00:00: Old\n" + kNic, "Gigabit Adapter: {NIC}\n");
  pc.adapters = {{"", "", {}}, vpn, nic};
  pc.pci_devices.clear();
  Expect(kNoPci, ": 00:00:00:00:00:00: \n" + kVpn + kNic, "");
}

TEST_F(AdaptersTest, OnlyTheSecondOfTwoCallsCounts) {
  int calls = 0;
  pc.At(kGetAdaptersInfo, "", [&] { ++calls == 1 ? pc.Fail(kGetAdaptersInfo, 5) : pc.Recover(); });
  pc.adapters = {nic};
  Expect(kFound, kNic, "Gigabit Adapter: {NIC}\n");
  EXPECT_EQ(calls, 2);
  pc.At(kGetAdaptersInfo, "", [&] { pc.adapters.push_back(nic); });
  ExpectWmi("GetAdaptersInfo failed with code = 111");
  pc.At(kGetAdaptersInfo, "", [&] { pc.adapters.clear(); });
  ExpectWmi("GetAdaptersInfo failed with code = 232");
}

TEST_F(AdaptersTest, WithoutMemoryTheAddressComesFromWmi) {
  std::optional<FailingMalloc> failing;
  pc.At(kGetAdaptersInfo, "", [&] { failing.emplace(1); });
  ExpectWmi("Cannot allocate memory #2");
  // In the last of three values, whose text comes first.
  int values = 0;
  pc.At(kGet, "", [&] { failing.emplace(++values == 3 ? 2 : 0); });
  ExpectWmi("Cannot allocate memory #1");
}

}  // namespace
}  // namespace system_info
