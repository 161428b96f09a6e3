// The rules that are functions of their arguments: format versions, ids, digest, text conversions.

#include <clocale>

#include "identity/device_id.h"
#include "identity/random_identity.h"
#include "support/call_log.h"
#include "support/md5_digest.h"
#include "support/scripted_machine.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

using namespace std::string_literals;

const std::string kGroups = "98500190-d23c-b04f-d696-3f7d28e17f72";

std::string Parse(const std::string& text) try {
  return HidFormatVersion(text).ToString();
} catch (const std::exception& failure) {
  return failure.what();
}

TEST(FormatVersion, IsReadFromTwoWords) {
  const std::map<std::string, std::vector<std::string>> cases = {
      {"1.0", {"", " . ", "2", "2.", "2.0.0", "x.y.z", "1 . 00"}},
      {"1.5", {"1.5", "1..5", "1 5", " \t1\n.\v5\f\r", "1x.5", "1.5y6", "01.005", "+1.+5"}},
      {"4294967295.2147483648", {"-1.-2147483648"}},
      {"invalid stoi argument", {"x.5", "5.x", "-.1", "+-1.0"}},
      {"stoi argument out of range", {"2147483648.0", "1.-2147483649", "1.99999999999999999999"}}};
  for (const auto& [outcome, texts] : cases) {
    for (const std::string& text : texts) EXPECT_EQ(Parse(text), outcome) << text;
  }
  const char* const rising[] = {"0.9", "1.0", "1.6", "1.10", "2.0", "10.0", "-1.0", "-1.-1"};
  for (std::size_t i = 1; i < std::size(rising); ++i) {
    EXPECT_LT(HidFormatVersion(rising[i - 1]), HidFormatVersion(rising[i])) << rising[i];
  }
}

TEST(DeviceId, IsADigestBehindItsFormat) {
  EXPECT_EQ(MakeDeviceId("abc", HidFormatVersion(1, 6)), "1-6-" + kGroups);
  EXPECT_EQ(MakeDeviceId("abc", HidFormatVersion(1, 0)), kGroups);
  const HidFormatVersion version(2, 0);
  EXPECT_EQ(RewriteDeviceIdPrefix("1-6-A", version), "2-0-A");
  EXPECT_EQ(RewriteDeviceIdPrefix("x1-0-y2-9-z", version), "x2-0-y2-0-z");
  for (const std::string kept : {"9-9-A", "0-1-A", "3-0-A", "1-x-A", "1-0A", "A"}) {
    EXPECT_EQ(RewriteDeviceIdPrefix(kept, version), kept);
  }
}

TEST(DeviceId, IsValidInOneLayoutOnly) {
  const std::string id = "1-6-" + kGroups;
  const std::string layout = "9-9-hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
  for (std::size_t at = 0; at < layout.size(); ++at) {
    const std::string allowed = layout[at] == '-' ? "-" : layout[at] == '9' ? "059" : "059afAF";
    for (const char c : "-059afAFgG/:@`\n"s) {
      const bool valid = IsValidDeviceId(std::string(id).replace(at, 1, 1, c));
      EXPECT_EQ(valid, allowed.find(c) != std::string::npos) << at << c;
    }
    EXPECT_FALSE(IsValidDeviceId(std::string(id).insert(at, 1, id[at])));
    EXPECT_FALSE(IsValidDeviceId(std::string(id).erase(at, 1)));
  }
  for (const char c : "\n0 \0"s) EXPECT_FALSE(IsValidDeviceId(id + c));
}

TEST(Md5, AgreesWithAnotherImplementation) {
  Md5Digest digests;  // Of all texts of 0 to 128 bytes, each whole and in pieces.
  for (std::string text; text.size() <= 128; text += static_cast<char>(text.size() * 7)) {
    Md5Digest pieces;
    for (const char& byte : text) pieces.Update(&byte, 1);
    const std::string digest = Md5Digest(text).HexDigest();
    EXPECT_EQ(pieces.Finalize().Finalize().HexDigest(), digest) << text.size();
    digests.Update(digest.data(), 32);
  }
  EXPECT_EQ(digests.HexDigest(), "");
  EXPECT_EQ(digests.Finalize().HexDigest(), "8987284c39bf4028ab81cde77319e3ce");
}

TEST(RandomText, IsANumberOf31Bits) {
  std::mt19937 generator(5489);
  EXPECT_EQ(RandomHardwareStringFrom(generator), "1351727964");
  const std::string text = MakeRandomHardwareString();
  EXPECT_EQ(std::to_string(std::stoi(text) & 0x7fffffff), text);
  EXPECT_FALSE(text == MakeRandomHardwareString() && text == MakeRandomHardwareString());
}

TEST(Conversions, GoAsFarAsTheLocaleAndTheLimitAllow) {
  EXPECT_EQ(ToNarrow(L"a\x7f\x80\u00e9\u00ff\u0142z"), "a\x7f\x80\xe9\xff");
  EXPECT_EQ(ToWide("a\x7f\x80\xe9\xff\0z"s), L"a\x7f\x80\u00e9\u00ff");
  for (const std::size_t size : {0u, 4095u, 4096u}) {
    EXPECT_EQ(ToNarrow(std::wstring(size, L'x')), std::string(size % 4096, 'x'));
    EXPECT_EQ(ToWide(std::string(size, 'x')), std::wstring(size % 4096, L'x'));
  }
  HIDLog log;
  log.WriteWide(std::wstring(4096, L'x'), LogLevel::Info);
  char copy[64];
  log.CopyTo(copy, 64);
  EXPECT_THAT(copy, testing::EndsWith("] [Info]  \n"));
  EXPECT_EQ(CopyToBuffer("ab\0cd"s, copy, 3), 0);

  ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_EQ(ToNarrow(L"\u0142\u20acz"), "\u0142\u20acz");
  EXPECT_EQ(ToWide("\u0142\u20acz\xffz"), L"\u0142\u20acz");
  EXPECT_EQ(ToNarrow(std::wstring(4000, L'\u00e9')).size(), 4096u);
  EXPECT_EQ(ToNarrow(L'x' + std::wstring(4000, L'\u00e9')).size(), 4095u);  // No half character.
  setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace system_info
