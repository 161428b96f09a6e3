#include "support/md5_digest.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace system_info {
namespace {

constexpr std::array<std::uint8_t, 64> kPadding = {0x80};

// The integer parts of 4294967296 * abs(sin(i)), i from 1 to 64 in radians.
constexpr std::array<std::uint32_t, 64> kSines = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

// For each round: the rotations of its steps, and the order in which its steps read the words of
// the block.
constexpr std::array<std::array<int, 4>, 4> kRotations = {{
    {7, 12, 17, 22},
    {5, 9, 14, 20},
    {4, 11, 16, 23},
    {6, 10, 15, 21},
}};
constexpr std::array<std::uint32_t, 4> kFirstWord = {0, 1, 5, 0};
constexpr std::array<std::uint32_t, 4> kWordStride = {1, 5, 3, 7};

std::uint32_t Mix(std::uint32_t round, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  switch (round) {
    case 0:
      return (b & c) | (~b & d);
    case 1:
      return (b & d) | (c & ~d);
    case 2:
      return b ^ c ^ d;
    default:
      return c ^ (b | ~d);
  }
}

std::uint32_t LoadWord(const std::uint8_t* bytes) {
  return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

template <std::size_t kWords>
std::array<std::uint8_t, 4 * kWords> StoreWords(const std::array<std::uint32_t, kWords>& words) {
  std::array<std::uint8_t, 4 * kWords> bytes = {};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(words[i / 4] >> (8 * (i % 4)));
  }
  return bytes;
}

}  // namespace

Md5Digest::Md5Digest() { Init(); }

Md5Digest::Md5Digest(std::string_view text) : Md5Digest() {
  Update(text.data(), static_cast<std::uint32_t>(text.size()));
  Finalize();
}

void Md5Digest::Init() {
  finalized_ = false;
  count_ = {};
  state_ = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
}

void Md5Digest::Update(const char* bytes, std::uint32_t length) {
  const auto* input = reinterpret_cast<const std::uint8_t*>(bytes);
  std::uint32_t fill = FillPosition();

  const std::uint32_t low_bits = length << 3;
  count_[0] += low_bits;
  if (count_[0] < low_bits) ++count_[1];
  count_[1] += length >> 29;

  while (length > 0) {
    if (fill == 0 && length >= kBlockSize) {
      Transform(input);
      input += kBlockSize;
      length -= kBlockSize;
      continue;
    }
    const std::uint32_t taken = std::min(kBlockSize - fill, length);
    std::memcpy(buffer_.data() + fill, input, taken);
    input += taken;
    length -= taken;
    fill = (fill + taken) % kBlockSize;
    if (fill == 0) Transform(buffer_.data());
  }
}

Md5Digest& Md5Digest::Finalize() {
  if (finalized_) return *this;
  const auto bit_count = StoreWords(count_);
  const std::uint32_t fill = FillPosition();
  Update(reinterpret_cast<const char*>(kPadding.data()), (fill < 56 ? 56 : 120) - fill);
  Update(reinterpret_cast<const char*>(bit_count.data()),
         static_cast<std::uint32_t>(bit_count.size()));
  digest_ = StoreWords(state_);
  buffer_ = {};
  count_ = {};
  finalized_ = true;
  return *this;
}

std::string Md5Digest::HexDigest() const {
  if (!finalized_) return {};
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : digest_) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

void Md5Digest::Transform(const std::uint8_t* block) {
  auto [a, b, c, d] = state_;
  for (std::uint32_t step = 0; step < 64; ++step) {
    const std::uint32_t round = step / 16;
    const std::uint32_t word = (kFirstWord[round] + kWordStride[round] * step) % 16;
    const std::uint32_t sum =
        a + Mix(round, b, c, d) + LoadWord(block + std::size_t{4} * word) + kSines[step];
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kRotations[round][step % 4]);
  }
  state_[0] += a;
  state_[1] += b;
  state_[2] += c;
  state_[3] += d;
}

}  // namespace system_info
