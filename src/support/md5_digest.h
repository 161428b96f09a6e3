// The MD5 digest of RFC 1321, as hexadecimal text.
//
// An object belongs to the code that made it.

#ifndef DEVICEID_SUPPORT_MD5_DIGEST_H_
#define DEVICEID_SUPPORT_MD5_DIGEST_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace system_info {

class Md5Digest {
 public:
  // An empty message that more can be added to.
  Md5Digest();

  // The finished digest of all bytes of `text`.
  explicit Md5Digest(std::string_view text);

  // Begins a new, empty message.
  void Init();

  // Adds `length` bytes to the message.
  void Update(const char* bytes, std::uint32_t length);

  // Completes the digest. A second call does nothing.
  Md5Digest& Finalize();

  // 32 lower-case hexadecimal digits, or an empty text before Finalize.
  std::string HexDigest() const;

 private:
  static constexpr std::uint32_t kBlockSize = 64;

  std::uint32_t FillPosition() const { return (count_[0] / 8) % kBlockSize; }
  void Transform(const std::uint8_t* block);

  bool finalized_ = false;
  std::array<std::uint8_t, kBlockSize> buffer_ = {};
  std::array<std::uint32_t, 2> count_ = {};  // Bits so far, low word first.
  std::array<std::uint32_t, 4> state_ = {};
  std::array<std::uint8_t, 16> digest_ = {};
};

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_MD5_DIGEST_H_
