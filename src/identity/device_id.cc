#include "identity/device_id.h"

#include <regex>
#include <utility>

#include "support/md5_digest.h"

namespace system_info {
namespace {

// Built while the library loads: a host that can load it cannot fail here later.
const std::regex kDeviceIdGrammar(  // NOLINT(cert-err58-cpp): a load without memory has no remedy
    "^[0-9][-][0-9][-][0-9a-fA-F]{8}[-][0-9a-fA-F]{4}[-][0-9a-fA-F]{4}[-][0-9a-fA-F]{4}[-]"
    "[0-9a-fA-F]{12}$");

std::string Prefix(HidFormatVersion version) {
  return std::to_string(version.major) + "-" + std::to_string(version.minor) + "-";
}

}  // namespace

DeviceId MakeDeviceId(const std::string& hardware_ids, HidFormatVersion version) {
  return FormatDeviceId(Md5Digest(hardware_ids).HexDigest(), version);
}

DeviceId FormatDeviceId(const std::string& hex, HidFormatVersion version) {
  // The first three groups are those that a GUID holds in little-endian order.
  std::string id = hex;
  ReverseHexPairs(id, 0, 8);
  ReverseHexPairs(id, 8, 12);
  ReverseHexPairs(id, 12, 16);
  for (const std::size_t dash : {8u, 13u, 18u, 23u}) id.insert(dash, 1, '-');
  return version > HidFormatVersion(1, 0) ? Prefix(version) + id : id;
}

void ReverseHexPairs(std::string& text, std::size_t begin, std::size_t end) {
  for (std::size_t low = begin, high = end - 2; low < (begin + end) / 2; low += 2, high -= 2) {
    std::swap(text[low], text[high]);
    std::swap(text[low + 1], text[high + 1]);
  }
}

bool IsValidDeviceId(const std::string& text) { return std::regex_match(text, kDeviceIdGrammar); }

DeviceId RewriteDeviceIdPrefix(const DeviceId& device_id, HidFormatVersion version) {
  static const std::regex kPrefix("[1-2]-[0-9]-");
  return std::regex_replace(device_id, kPrefix, Prefix(version));
}

}  // namespace system_info
