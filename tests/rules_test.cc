// The rules that are functions of their arguments: format versions, ids, digest, text conversions.

#include <clocale>
#include <cstdio>

#include "identity/random_identity.h"
#include "support/md5_digest.h"
#include "support/scripted_machine.h"
#include "support/text_conversions.h"
#include "values/device_id.h"

namespace system_info {
namespace {

using namespace std::string_literals;

TEST(FormatVersion, IsReadFromTwoWords) {
  EXPECT_EQ(HidFormatVersion(" \t1\n.\v5\f\r").ToString(), "1.5");
  EXPECT_EQ(HidFormatVersion("1x.+05y").ToString(), "1.5");
  EXPECT_EQ(HidFormatVersion("2.0.0").ToString(), "1.0");
  EXPECT_EQ(HidFormatVersion("-1.-2147483648").ToString(), "4294967295.2147483648");
  EXPECT_THROW(HidFormatVersion("5.x"), std::invalid_argument);
  EXPECT_THROW(HidFormatVersion("2147483648.0"), std::out_of_range);
  EXPECT_LT(HidFormatVersion("1.10"), HidFormatVersion("2.0"));
}

TEST(DeviceId, ChangesItsFormatFrom1Or2Only) {
  EXPECT_EQ(RewriteDeviceIdPrefix("x1-0-y2-9-Z", {2, 0}), "x2-0-y2-0-Z");
  for (const std::string kept : {"9-9-A", "0-1-A", "3-0-A", "1-x-A", "1-0A"}) {
    EXPECT_EQ(RewriteDeviceIdPrefix(kept, {2, 0}), kept);
  }
}

TEST(DeviceId, IsValidInOneLayoutOnly) {
  const std::string id = "1-6-98500190-d23c-b04f-d696-3f7d28e17f72";
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
  EXPECT_FALSE(IsValidDeviceId(id + '\n'));
}

TEST(Md5, AgreesWithPython) {
  FILE* digests = popen(
      "python3 -c 'for n in range(129): "
      "print(__import__(\"hashlib\").md5(bytes(i * 7 % 256 for i in range(n))).hexdigest())'",
      "r");
  for (std::string text; text.size() <= 128; text += static_cast<char>(text.size() * 7)) {
    char digest[34] = "";
    ASSERT_NE(std::fgets(digest, sizeof(digest), digests), nullptr);
    EXPECT_EQ(Md5Digest(text).HexDigest() + '\n', digest) << text.size() << " bytes";
  }
  pclose(digests);
}

TEST(Md5, TakesATextInPieces) {
  const std::string text(200, 'x');
  Md5Digest pieces;
  for (std::size_t at = 0; at < text.size(); at += 40) pieces.Update(text.data() + at, 40);
  EXPECT_EQ(pieces.Finalize().HexDigest(), Md5Digest(text).HexDigest());
}

TEST(RandomText, IsANumberOf31Bits) {
  std::mt19937 generator(5489);
  EXPECT_EQ(RandomHardwareStringFrom(generator), "1351727964");
}

TEST(Conversions, GoAsFarAsTheLocaleAndTheLimitAllow) {
  EXPECT_EQ(ToNarrow(L"a\x7f\x80\u00e9\u00ff\u0142z"), "a\x7f\x80\xe9\xff");
  EXPECT_EQ(ToWide("a\x7f\x80\xe9\xff\0z"s), L"a\x7f\x80\u00e9\u00ff");
  for (const std::size_t size : {4095u, 4096u}) {
    EXPECT_EQ(ToNarrow(std::wstring(size, L'x')), std::string(size % 4096, 'x'));
    EXPECT_EQ(ToWide(std::string(size, 'x')), std::wstring(size % 4096, L'x'));
  }
  ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_EQ(ToWide("\u0142\u20acz\xffz"), L"\u0142\u20acz");
  EXPECT_EQ(ToNarrow(L'x' + std::wstring(4000, L'\u00e9')).size(), 4095u);  // No half character.
  setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace system_info
