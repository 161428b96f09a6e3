#include "values/device_id.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "support/md5_digest.h"

namespace system_info {
namespace {

// The length of "2-0-". Ids that are rewritten have one digit on either side of the point.
constexpr std::size_t kPrefixLength = 4;

// The layout of an id: 'd' stands for a decimal digit, 'h' for a hexadecimal digit of either case,
// a dash for itself.
constexpr std::string_view kDeviceIdGrammar = "d-d-hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

bool IsHexDigit(char character) {
  return IsDigit(character) || (character >= 'a' && character <= 'f') ||
         (character >= 'A' && character <= 'F');
}

bool Fits(char character, char wanted) {
  if (wanted == 'd') return IsDigit(character);
  if (wanted == 'h') return IsHexDigit(character);
  return character == wanted;
}

// True if `text` begins with the digits of a format from 1.0 to 2.9 and their dashes.
bool BeginsWithPrefix(std::string_view text) {
  return text.size() >= kPrefixLength && (text[0] == '1' || text[0] == '2') && text[1] == '-' &&
         IsDigit(text[2]) && text[3] == '-';
}

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

bool IsValidDeviceId(const std::string& text) {
  return std::equal(text.begin(), text.end(), kDeviceIdGrammar.begin(), kDeviceIdGrammar.end(),
                    Fits);
}

DeviceId RewriteDeviceIdPrefix(const DeviceId& device_id, HidFormatVersion version) {
  const std::string prefix_text = Prefix(version);
  const std::string_view prefix = prefix_text;
  DeviceId rewritten;
  for (std::string_view rest = device_id; !rest.empty();) {
    const bool found = BeginsWithPrefix(rest);
    rewritten.append(found ? prefix : rest.substr(0, 1));
    rest.remove_prefix(found ? kPrefixLength : 1);
  }
  return rewritten;
}

}  // namespace system_info
