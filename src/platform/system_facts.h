// The system that this process runs on, for remote support.

#ifndef DEVICEID_PLATFORM_SYSTEM_FACTS_H_
#define DEVICEID_PLATFORM_SYSTEM_FACTS_H_

#include <string>
#include <vector>

namespace system_info {

// All texts are UTF-8, and empty if unknown.
struct SystemFacts {
  std::string name;          // "Debian GNU/Linux 12 (bookworm)", "Windows"
  std::string release;       // "6.1.0-13-amd64", "10.0.19045"
  std::string architecture;  // "x86_64"
  std::string host;          // The name of the machine.
  std::string container;     // "docker", "podman", "lxc"; empty outside of one.
  // The makers and models of machine, board and firmware, which hypervisors fill in as well.
  std::vector<std::string> makers;
  bool hypervisor = false;  // The processor reports one.
};

SystemFacts LookAtSystem();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_SYSTEM_FACTS_H_
