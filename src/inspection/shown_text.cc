#include "inspection/shown_text.h"

#include <algorithm>
#include <cstdint>

namespace system_info {
namespace {

constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
constexpr std::string_view kLittleEndianMark = "\xff\xfe";
constexpr std::string_view kBigEndianMark = "\xfe\xff";

struct Utf8Form {
  std::size_t length;
  std::uint32_t smallest;  // A character below has a shorter form.
  unsigned char lead_mask;
  unsigned char lead;
};

constexpr Utf8Form kUtf8Forms[] = {
    {1, 0, 0x80, 0x00}, {2, 0x80, 0xe0, 0xc0}, {3, 0x800, 0xf0, 0xe0}, {4, 0x10000, 0xf8, 0xf0}};

unsigned char ByteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

bool IsCharacter(std::uint32_t code) {
  return code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
}

// The length of the UTF-8 character that `bytes` begin with, or 0 if they begin with none.
std::size_t Utf8Length(std::string_view bytes) {
  for (const Utf8Form& form : kUtf8Forms) {
    if ((ByteAt(bytes, 0) & form.lead_mask) != form.lead) continue;
    if (bytes.size() < form.length) return 0;
    std::uint32_t code = ByteAt(bytes, 0) & static_cast<unsigned char>(~form.lead_mask);
    for (std::size_t i = 1; i < form.length; ++i) {
      if ((ByteAt(bytes, i) & 0xc0) != 0x80) return 0;
      code = code << 6 | (ByteAt(bytes, i) & 0x3fU);
    }
    return code >= form.smallest && IsCharacter(code) ? form.length : 0;
  }
  return 0;
}

void AppendUtf8(std::string& text, std::uint32_t code) {
  const Utf8Form* form = std::begin(kUtf8Forms);
  while (form != std::end(kUtf8Forms) - 1 && code >= form[1].smallest) ++form;
  std::size_t shift = 6 * (form->length - 1);
  text += static_cast<char>(form->lead | code >> shift);
  while (shift > 0) {
    shift -= 6;
    text += static_cast<char>(0x80 | (code >> shift & 0x3f));
  }
}

bool IsControl(std::string_view character) {
  const unsigned char first = ByteAt(character, 0);
  if (first < 0x20 || first == 0x7f) return true;
  // U+0080 to U+009F are control characters, too.
  if (first == 0xc2) return ByteAt(character, 1) < 0xa0;
  // U+202A to U+202E and U+2066 to U+2069 turn the text behind them around.
  if (first != 0xe2) return false;
  const std::uint32_t last = ByteAt(character, 1) * 256U + ByteAt(character, 2);
  return (last >= 0x80aa && last <= 0x80ae) || (last >= 0x81a6 && last <= 0x81a9);
}

// Text of plain letters has a zero in each second byte.
bool HasZeros(std::string_view bytes, std::size_t place) {
  constexpr std::size_t kLookedAt = 8;
  if (bytes.size() < 4) return false;
  const std::string_view start =
      bytes.substr(0, std::min(bytes.size() & ~std::size_t{1}, kLookedAt));
  for (std::size_t i = 0; i < start.size(); ++i) {
    if ((start[i] == '\0') != (i % 2 == place)) return false;
  }
  return true;
}

}  // namespace

std::string ToUtf8(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = Utf8Length(bytes);
    if (length > 0) {
      text += bytes.substr(0, length);
    } else {
      AppendUtf8(text, ByteAt(bytes, 0));
    }
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string Harmless(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::string utf8 = ToUtf8(bytes);
  std::string text;
  for (std::string_view rest = utf8; !rest.empty();) {
    const std::string_view character = rest.substr(0, Utf8Length(rest));
    rest.remove_prefix(character.size());
    if (!IsControl(character)) {
      text += character;
      continue;
    }
    for (const char byte : character) {
      const auto value = static_cast<unsigned char>(byte);
      text.append("\\x").append(1, kDigits[value >> 4]).append(1, kDigits[value & 15]);
    }
  }
  return text;
}

std::size_t CountCharacters(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xc0) != 0x80; }));
}

std::optional<std::string> FromUtf16(std::string_view bytes) {
  const bool little = bytes.starts_with(kLittleEndianMark) || HasZeros(bytes, 1);
  const bool big = bytes.starts_with(kBigEndianMark) || HasZeros(bytes, 0);
  if (!little && !big) return std::nullopt;
  const bool marked = bytes.starts_with(little ? kLittleEndianMark : kBigEndianMark);
  bytes.remove_prefix(marked ? 2 : 0);

  std::string text;
  std::uint32_t high = 0;  // The first half of a pair.
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    std::uint32_t code =
        ByteAt(bytes, little ? i + 1 : i) * 256U + ByteAt(bytes, little ? i : i + 1);
    const bool second_half = code >= 0xdc00 && code <= 0xdfff;
    if (second_half && high != 0) code = 0x10000 + ((high & 0x3ff) << 10) + (code & 0x3ff);
    high = code >= 0xd800 && code <= 0xdbff ? code : 0;
    if (code <= 0xff) {
      text += static_cast<char>(code);
    } else if (high == 0) {
      AppendUtf8(text, IsCharacter(code) ? code : 0xfffd);
    }
  }
  return text;
}

std::string_view WithoutByteOrderMark(std::string_view bytes) {
  return bytes.substr(bytes.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0);
}

}  // namespace system_info
