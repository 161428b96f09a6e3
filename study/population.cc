#include "study/population.h"

namespace system_info {
namespace {

constexpr std::uint64_t kContainersOnHost = 10;
constexpr std::uint64_t kSharedUuids = 14;
constexpr std::uint64_t kProcessorModels = 30;
constexpr std::uint64_t kMemorySizes = 5;
constexpr std::uint64_t kPlacesOnContainerNetwork = 20;

std::uint64_t Number(int number) { return static_cast<std::uint64_t>(number); }

// What makers leave in place of a serial number. All but the first count as a value.
std::string Placeholder(const Parameters& p, const Draws& draws) {
  const double text = draws.Share("placeholder text");
  if (text < p["filtered_placeholder"]) return kFilteredPlaceholder;
  return text < p["filtered_placeholder"] + p["default_string"] ? "Default string"
                                                                : "System Serial Number";
}

void DrawSerials(const Parameters& p, const Draws& draws, Computer& computer) {
  if (draws.Share("no serial numbers") < p["no_serials"]) {
    computer.product.text = computer.board.text = "";
  } else if (draws.Share("board has none") < p["board_says_none"]) {
    computer.board.text = "None";
  }
  const bool placeholder = draws.Share("placeholder") < p["placeholder_serial"];
  if (placeholder) computer.product.text = Placeholder(p, draws);
  if (placeholder && draws.Share("board follows") < p["board_follows_product"]) {
    computer.board.text = Placeholder(p, draws);
  }
  const double uuid = draws.Share("uuid");
  if (uuid < p["empty_uuid"]) {
    computer.system_uuid = "00000000-0000-0000-0000-000000000000";
  } else if (uuid < p["empty_uuid"] + p["shared_uuid"]) {
    computer.system_uuid = "shared" + std::to_string(draws.Bits("shared uuid") % kSharedUuids);
  }
}

void DrawAdapters(const Parameters& p, const Draws& draws, bool portable, Computer& computer) {
  computer.adapters.clear();
  const auto add = [&](AdapterKind kind, const char* name) -> Adapter& {
    Adapter adapter = MakeAdapter(kind, name, draws.Bits(name));
    adapter.in_front = kind != AdapterKind::kBuiltIn &&
                       draws.Share("in front", draws.Bits(name)) < p["newcomer_first"];
    return computer.adapters.emplace_back(adapter);
  };
  const bool wifi = draws.Share("wifi") < p["wifi"];
  if (!wifi || draws.Share("ethernet") >= p["no_ethernet"]) add(AdapterKind::kBuiltIn, "ethernet");
  if (wifi) add(AdapterKind::kBuiltIn, "wifi");
  computer.last_pci_first = draws.Share("wifi first") < p["wifi_first"];
  if (draws.Share("bluetooth") < p["bluetooth"]) add(AdapterKind::kBluetooth, "bluetooth");
  if (portable && draws.Share("dock") < p["dock"]) {
    add(AdapterKind::kDock, "dock").on_pci = draws.Share("dock on pci") < p["dock_on_pci"];
  }
  if (draws.Share("vpn") < p["vpn"]) add(AdapterKind::kVpn, "vpn");
}

// Another installation, or one that came with the image of the machine's group.
void DrawDrive(const Population& population, int number, PlayedLibrary& library,
               Computer& computer) {
  const Parameters& p = population.parameters;
  const Draws image =
      population.draws.For("image", Number(number) / static_cast<std::uint64_t>(p["group_size"]));
  if (image.Share("imaged") >= p["imaged"]) return;
  Computer model = OrdinaryComputer(image);
  model.windows = computer.windows;
  if (image.Share("files in image") < p["image_has_files"]) {
    for (const char* format : {"1.6", "2.0"}) library.GetId(model, format, 0);
  }
  computer.drive.volume = model.drive.volume;
  computer.drive.stored = model.drive.stored;
  if (image.Share("machine id in image") < p["image_keeps_machine_id"]) {
    computer.drive.machine_id = model.drive.machine_id;
  }
}

void MakeContainer(const Population& population, int number, Computer& computer) {
  const Parameters& p = population.parameters;
  const Draws draws = population.draws.For("machine", Number(number));
  const Draws image =
      population.draws.For("image", Number(number) / static_cast<std::uint64_t>(p["group_size"]));
  PutOnHost(population, Number(number) / kContainersOnHost, computer);
  computer.drive.volume.text = "";
  computer.drive.machine_id.text = image.Share("machine id in image") < p["image_keeps_machine_id"]
                                       ? UniqueText("id", image.Bits("machine id"))
                                       : "";
  computer.drive.system_serial = computer.drive.machine_id.text;
  computer.adapters = {MakeAdapter(AdapterKind::kContainer, "eth0", 0)};
  computer.adapters[0].drawn = draws.Share("drawn address") < p["drawn_container_address"];
  DrawContainerAddress(draws, 0, computer.adapters[0]);
}

}  // namespace

std::string UniqueText(const char* prefix, std::uint64_t bits) {
  return prefix + std::to_string(bits);
}

Adapter MakeAdapter(AdapterKind kind, const std::string& name, std::uint64_t bits) {
  Adapter adapter;
  adapter.name = name;
  adapter.kind = kind;
  adapter.on_pci = kind == AdapterKind::kBuiltIn;
  adapter.permanent_address = adapter.address = bits & 0xfeffffffffffU;
  return adapter;
}

Computer OrdinaryComputer(const Draws& draws) {
  Computer computer;
  computer.system_uuid = UniqueText("uuid", draws.Bits("system uuid"));
  computer.product.text = UniqueText("product", draws.Bits("product"));
  computer.board.text = UniqueText("board", draws.Bits("board"));
  computer.disk = UniqueText("disk", draws.Bits("disk"));
  computer.processor = UniqueText("processor", draws.Bits("processor") % kProcessorModels);
  computer.memory = UniqueText("memory", draws.Bits("memory") % kMemorySizes);
  computer.drive.volume.text = std::to_string(draws.Bits("volume") >> 32);
  computer.drive.machine_id.text = UniqueText("id", draws.Bits("machine id"));
  computer.drive.system_serial = "00330-80000-00000-AAOEM";
  computer.adapters = {MakeAdapter(AdapterKind::kBuiltIn, "ethernet", draws.Bits("ethernet"))};
  return computer;
}

Computer MakeComputer(const Population& population, int number, PlayedLibrary& library) {
  const Parameters& p = population.parameters;
  const Draws draws = population.draws.For("machine", Number(number));
  Computer computer = OrdinaryComputer(draws);
  computer.windows = draws.Share("linux") >= p["linux"];
  computer.reads_serials = computer.windows || draws.Share("root") < p["root"];
  computer.common_writable =
      computer.reads_serials && draws.Share("private files") >= p["private_files"];
  if (p["container"] != 0) {
    MakeContainer(population, number, computer);
    return computer;
  }
  DrawSerials(p, draws, computer);
  DrawAdapters(p, draws, draws.Share("portable") < p["portable"], computer);
  DrawDrive(population, number, library, computer);
  if (!computer.windows) computer.drive.system_serial = computer.drive.machine_id.text;
  return computer;
}

void PutOnHost(const Population& population, std::uint64_t host, Computer& container) {
  const std::uint64_t hosts = Number(population.size) / kContainersOnHost + 1;
  const Draws draws = population.draws.For("host", host % hosts);
  const Computer model = OrdinaryComputer(draws);
  container.system_uuid = model.system_uuid;
  container.product.text = model.product.text;
  container.board.text = model.board.text;
  container.disk = model.disk;
  container.processor = model.processor;
  container.memory = model.memory;
  if (draws.Share("no serial numbers") >= population.parameters["no_serials"]) return;
  container.product.text = container.board.text = "";
}

void DrawContainerAddress(const Draws& draws, std::uint64_t start, Adapter& adapter) {
  const std::uint64_t place = 2 + draws.Bits("place", start) % kPlacesOnContainerNetwork;
  adapter.address =
      adapter.drawn ? draws.Bits("address", start) & 0xfeffffffffffU : 0x0242ac110000U + place;
  adapter.permanent_address = adapter.address;
}

}  // namespace system_info
