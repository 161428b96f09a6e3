#include "inspection/hardware_parts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <set>
#include <tuple>

namespace system_info {
namespace {

constexpr std::size_t kListed = 4;  // The names from kVolume to kNetwork.

constexpr std::array<const char*, 6> kNameTexts = {"volume",  "product", "board",
                                                   "network", "uuid",    "serial"};
constexpr std::array<const char*, 6> kStateTexts = {"same", "changed", "moved",
                                                    "gone", "new",     "unknown"};

using Texts = std::vector<std::string>;
using Named = std::vector<NamedValue>;
// The name of each stored value, in their order.
using Reading = std::vector<PartName>;

// 'h' stands for a hexadecimal digit in lower case, as all of these values are.
bool HasForm(std::string_view text, std::string_view form) {
  const auto fits = [](char c, char wanted) {
    const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    return wanted == 'h' ? digit : c == wanted;
  };
  return std::equal(text.begin(), text.end(), form.begin(), form.end(), fits);
}

bool LooksLikeAddress(std::string_view text) { return HasForm(text, "hh:hh:hh:hh:hh:hh"); }

bool LooksLikeVolume(std::string_view text) {
  return HasForm(text, "hhhhhhhh") || HasForm(text, "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh");
}

const NamedValue* Find(const Named& values, PartName name) {
  const auto found = std::find_if(values.begin(), values.end(),
                                  [name](const NamedValue& value) { return value.name == name; });
  return found == values.end() ? nullptr : &*found;
}

// How much speaks for a reading, most weighty first: values that are still there, those that are
// there in another spelling, forms that fit the names, names that both lists have.
using Evidence = std::tuple<int, int, int, int>;

Evidence Weigh(const Texts& stored, const Reading& reading, const Named& present) {
  auto [equal, respelled, form, paired] = Evidence();
  for (std::size_t i = 0; i < stored.size(); ++i) {
    const NamedValue* now = Find(present, reading[i]);
    if (now != nullptr) ++paired;
    if (now != nullptr && now->text == stored[i]) ++equal;
    if (now != nullptr && IsSameTextRespelled(now->text, stored[i])) ++respelled;
    if (LooksLikeAddress(stored[i]) == (reading[i] == PartName::kNetwork)) ++form;
    if (LooksLikeVolume(stored[i]) == (reading[i] == PartName::kVolume)) ++form;
  }
  return {equal, respelled, form, paired};
}

// Every way to give `count` values names in their order.
std::vector<Reading> AllReadings(std::size_t count) {
  std::vector<Reading> readings;
  for (unsigned chosen = 0; chosen < 1U << kListed; ++chosen) {
    Reading reading;
    for (std::size_t name = 0; name < kListed; ++name) {
      if ((chosen >> name & 1U) != 0) reading.push_back(static_cast<PartName>(name));
    }
    if (reading.size() == count) readings.push_back(reading);
  }
  return readings;
}

// The names that each stored value can have. More than four values come from an emulated list and
// have none.
std::vector<std::set<PartName>> PossibleNames(const Texts& stored, const Named& present) {
  std::vector<std::set<PartName>> names(stored.size());
  Evidence best;
  for (const Reading& reading : AllReadings(stored.size())) {
    const Evidence evidence = Weigh(stored, reading, present);
    if (evidence < best) continue;
    if (evidence > best) names.assign(stored.size(), {});
    best = evidence;
    for (std::size_t i = 0; i < stored.size(); ++i) names[i].insert(reading[i]);
  }
  return names;
}

// Finds the present value of a stored one. A value with one name keeps it whatever it is now; one
// that can be two is found by its text.
const NamedValue* PresentValue(const Part& part, const Named& present) {
  for (const NamedValue& value : present) {
    const bool named = std::count(part.names.begin(), part.names.end(), value.name) > 0;
    if (part.names.size() == 1 ? named : (named || part.names.empty()) && value.text == part.stored)
      return &value;
  }
  return nullptr;
}

// Where the values of the machine that no stored one is belong among the parts.
std::vector<Part>::iterator PlaceOf(std::vector<Part>& parts, PartName name) {
  return std::find_if(parts.begin(), parts.end(), [name](const Part& part) {
    return !part.names.empty() && part.names.front() > name;
  });
}

std::string Fold(std::string_view text) {
  std::string folded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte) != 0) folded += static_cast<char>(std::tolower(byte));
  }
  return folded;
}

// Found on many machines, folded.
constexpr std::string_view kPlaceholders[] = {"defaultstring",
                                              "none",
                                              "notspecified",
                                              "notapplicable",
                                              "notavailable",
                                              "nonespecified",
                                              "na",
                                              "unknown",
                                              "invalid",
                                              "empty",
                                              "oem",
                                              "tobefilledbyoem",
                                              "serialnumber",
                                              "systemserialnumber",
                                              "baseboardserialnumber",
                                              "boardserialnumber",
                                              "chassisserialnumber",
                                              "0123456789",
                                              "123456789",
                                              "1234567890",
                                              "12345678",
                                              "1234567"};

struct AddressRange {
  std::string_view start;
  const char* owner;
};

constexpr AddressRange kVirtualAddresses[] = {
    {"00:05:69", "VMware"},
    {"00:0c:29", "VMware"},
    {"00:1c:14", "VMware"},
    {"00:50:56", "VMware"},
    {"08:00:27", "VirtualBox"},
    {"0a:00:27", "VirtualBox"},
    {"00:15:5d", "Hyper-V"},
    {"00:03:ff", "Virtual PC"},
    {"52:54:00", "QEMU and KVM"},
    {"00:16:3e", "Xen"},
    {"00:1c:42", "Parallels"},
    {"02:42:", "Docker"},
    {"00:ff:", "a TAP adapter of a VPN"},
    {"00:05:9a", "a VPN client"},
    {"02:05:85", "a VPN client"},
    {"02:00:4c:4f:4f:50", "the loopback adapter of Windows"},
};

std::string DoubtAboutAddress(std::string_view text) {
  for (const AddressRange& range : kVirtualAddresses) {
    if (text.starts_with(range.start)) return std::string("an address of ") + range.owner;
  }
  constexpr std::string_view kLocalDigits = "2367abef";
  const bool local = kLocalDigits.find(text[1]) != std::string_view::npos;
  return local ? "an address that software has set and can set anew" : "";
}

}  // namespace

const char* TextOf(PartName name) { return kNameTexts[static_cast<std::size_t>(name)]; }

const char* TextOf(PartState state) { return kStateTexts[static_cast<std::size_t>(state)]; }

std::string NameOf(const Part& part) {
  std::string text;
  for (const PartName name : part.names) {
    text.append(text.empty() ? "" : " or ").append(TextOf(name));
  }
  return text.empty() ? "unnamed" : text;
}

bool IsSerialNumber(const Part& part) {
  return std::any_of(part.names.begin(), part.names.end(), [](PartName name) {
    return name == PartName::kProduct || name == PartName::kBoard;
  });
}

std::vector<Part> CompareParts(const std::vector<std::string>& stored,
                               const std::optional<std::vector<NamedValue>>& present) {
  const Named now = present.value_or(Named());
  const auto names = PossibleNames(stored, now);
  std::vector<bool> taken(now.size());
  std::vector<Part> parts;
  for (std::size_t i = 0; i < stored.size(); ++i) {
    Part part;
    part.names.assign(names[i].begin(), names[i].end());
    part.stored = stored[i];
    if (present) part.state = PartState::kGone;
    if (const NamedValue* value = PresentValue(part, now)) {
      const auto place = static_cast<std::size_t>(value - now.data());
      taken[place] = true;
      part.present = value->text;
      const PartState equal = place == i ? PartState::kSame : PartState::kMoved;
      part.state = value->text == stored[i] ? equal : PartState::kChanged;
    }
    parts.push_back(part);
  }
  for (std::size_t place = 0; place < now.size(); ++place) {
    if (taken[place]) continue;
    parts.insert(PlaceOf(parts, now[place].name),
                 {{now[place].name}, std::nullopt, now[place].text, PartState::kNew});
  }
  return parts;
}

bool IsSameTextRespelled(std::string_view one, std::string_view other) {
  return one != other && !Fold(one).empty() && Fold(one) == Fold(other);
}

std::string DoubtAbout(PartName name, std::string_view text) {
  const std::string folded = Fold(text);
  if (std::all_of(folded.begin(), folded.end(), [&](char c) { return c == folded[0]; })) {
    return "one character over and over, in place of a number";
  }
  if (name == PartName::kNetwork && LooksLikeAddress(text)) return DoubtAboutAddress(text);
  const bool placeholder = std::find(std::begin(kPlaceholders), std::end(kPlaceholders), folded) !=
                           std::end(kPlaceholders);
  return placeholder ? "a text that makers leave in place of a number" : "";
}

}  // namespace system_info
