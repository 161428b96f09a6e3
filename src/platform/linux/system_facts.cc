#include "platform/system_facts.h"

#include <sys/utsname.h>

#include <optional>
#include <string_view>

#include "platform/linux/value_files.h"

namespace system_info {
namespace {

struct ContainerMark {
  const char* text;
  const char* kind;
};

constexpr ContainerMark kControlGroups[] = {
    {"/docker", "docker"}, {"/libpod", "podman"},         {"/kubepods", "kubernetes"},
    {"/lxc", "lxc"},       {"/containerd", "containerd"},
};

constexpr const char* kMakerFiles[] = {"sys_vendor", "product_name", "board_vendor", "bios_vendor"};

// The value of `name` in lines or records of the form NAME=VALUE.
std::string ValueOf(std::string_view text, std::string_view name, char separator) {
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (!line.starts_with(name)) continue;
    line.remove_prefix(name.size());
    const bool quoted = line.size() >= 2 && line.front() == '"' && line.back() == '"';
    return std::string(quoted ? line.substr(1, line.size() - 2) : line);
  }
  return {};
}

std::string ContainerKind() {
  // Systemd and container managers report the kind of container here.
  if (const auto kind = ReadValue("/run/systemd/container")) return *kind;
  std::string told = ValueOf(ReadValue("/proc/1/environ").value_or(""), "container=", '\0');
  if (!told.empty()) return told;
  if (Exists("/run/.containerenv")) return "podman";
  if (Exists("/.dockerenv")) return "docker";
  const std::string groups = ReadValue("/proc/1/cgroup").value_or("");
  for (const ContainerMark& mark : kControlGroups) {
    if (groups.find(mark.text) != std::string::npos) return mark.kind;
  }
  return {};
}

}  // namespace

SystemFacts LookAtSystem() {
  SystemFacts facts;
  utsname names = {};
  if (uname(&names) == 0) {
    facts.release = names.release;
    facts.architecture = names.machine;
    facts.host = names.nodename;
  }
  facts.name = ValueOf(ReadValue("/etc/os-release").value_or(""), "PRETTY_NAME=", '\n');
  if (facts.name.empty()) facts.name = "Linux";
  facts.container = ContainerKind();
  for (const char* file : kMakerFiles) {
    const auto text = ReadValue(std::string("/sys/class/dmi/id/") + file);
    if (text) facts.makers.push_back(*text);
  }
  const std::string processor = ReadValue("/proc/cpuinfo").value_or("");
  facts.hypervisor = processor.find(" hypervisor") != std::string::npos;
  return facts;
}

}  // namespace system_info
