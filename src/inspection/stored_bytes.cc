#include "inspection/stored_bytes.h"

#include <algorithm>
#include <array>
#include <exception>

#include "inspection/shown_text.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr std::array<const char*, 3> kStateTexts = {"good", "empty", "damaged"};

// Twins of the limits in the library's readers of files.
constexpr std::size_t kReadOfIdFile = 8191;
constexpr std::uint32_t kMaxHardwareIds = 256;
constexpr std::uint32_t kMaxStringLength = 0x7ffffffe;

constexpr std::string_view kAnyId = "1-6-00000000-0000-0000-0000-000000000000";

std::string Without(std::string_view text, std::string_view characters) {
  std::string kept(text);
  std::erase_if(kept,
                [characters](char c) { return characters.find(c) != std::string_view::npos; });
  return kept;
}

std::string Trimmed(std::string_view text, std::string_view characters) {
  const std::size_t begin = std::min(text.find_first_not_of(characters), text.size());
  return std::string(text.substr(begin, text.find_last_not_of(characters) + 1 - begin));
}

// What tools do to an id file, and how it is undone.
struct Repair {
  const char* damage;
  std::string (*undo)(std::string_view text);
};

constexpr Repair kRepairs[] = {
    {"it is in UTF-16",
     [](std::string_view text) { return FromUtf16(text).value_or(std::string(text)); }},
    {"it begins with a byte order mark",
     [](std::string_view text) { return std::string(WithoutByteOrderMark(text)); }},
    {"it holds zero bytes",
     [](std::string_view text) { return Without(text, std::string_view("\0", 1)); }},
    {"a line end stands at the id", [](std::string_view text) { return Trimmed(text, "\r\n"); }},
    {"blanks stand at the id", [](std::string_view text) { return Trimmed(text, " \t\r\n"); }},
    {"quotation marks stand at the id", [](std::string_view text) { return Trimmed(text, "\"'"); }},
};

// What is wrong with a text that no repair makes an id of.
std::string DescribeNoId(const std::string& text) {
  if (text.empty()) return "nothing else is in it";
  const bool cut = text.size() < kAnyId.size() &&
                   IsValidDeviceId(text + std::string(kAnyId.substr(text.size())));
  if (cut) {
    return "the id is cut: " + std::to_string(text.size()) + " of its " +
           std::to_string(kAnyId.size()) + " characters are there";
  }
  if (IsValidDeviceId("1-0-" + text)) return "the digits of its format are missing";
  if (IsValidDeviceId(text.substr(0, kAnyId.size()))) return "other text stands behind the id";
  return "its text is no id";
}

// Reads the fields of a record in their order, up to the first that is damaged.
class FieldReader {
 public:
  explicit FieldReader(std::string_view bytes) : rest_(bytes) {}

  RecordContent Read() {
    if (ReadFields()) {
      content_.state = ContentState::kGood;
      content_.use = RecordUse::kRead;
      content_.trailing_bytes = rest_.size();
    }
    return content_;
  }

 private:
  bool ReadFields() {
    std::string version;
    if (!ReadText("version", version) || !ReadVersion(version)) return false;
    std::string device_id;
    if (!ReadText("id", device_id)) return false;
    content_.device_id = device_id;
    return ReadNumber("type", content_.type) && ReadNumber("date", content_.date) && ReadParts();
  }

  bool ReadVersion(const std::string& version) {
    content_.version = version;
    try {
      static_cast<void>(HidFormatVersion(version));
      return true;
    } catch (const std::exception& failure) {
      return Fail("version", "its version is none", failure.what());
    }
  }

  bool ReadParts() {
    if (!ReadNumber("number of parts", content_.count)) return false;
    if (*content_.count > kMaxHardwareIds) {
      return Fail("number of parts", "its number of parts is " + std::to_string(*content_.count) +
                                         ", and " + std::to_string(kMaxHardwareIds) +
                                         " is the largest");
    }
    for (std::uint32_t i = 1; i <= *content_.count; ++i) {
      std::string part;
      if (!ReadText("part " + std::to_string(i), part)) return false;
      if (!part.empty()) content_.parts.push_back(part);
    }
    return true;
  }

  bool ReadText(const std::string& field, std::string& text) {
    std::optional<std::uint32_t> length;
    if (!ReadNumber("length of the " + field, length)) return false;
    const std::string says = "the length of its " + field + " is " + std::to_string(*length);
    if (*length > kMaxStringLength) {
      return Fail("length of the " + field, says, "basic_string::resize");
    }
    if (*length > rest_.size()) {
      return Fail("length of the " + field,
                  says + ", and " + std::to_string(rest_.size()) + " bytes are left");
    }
    text = rest_.substr(0, *length);
    rest_.remove_prefix(*length);
    return true;
  }

  template <typename Number>
  bool ReadNumber(const std::string& field, std::optional<Number>& number) {
    if (rest_.size() < sizeof(Number)) return Fail(field, "it ends in its " + field);
    std::uint64_t bits = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;) {
      bits = bits << 8 | static_cast<unsigned char>(rest_[i]);
    }
    number = static_cast<Number>(bits);
    rest_.remove_prefix(sizeof(Number));
    return true;
  }

  // With the text of an exception the call fails and the file stays.
  bool Fail(const std::string& field, const std::string& damage, const std::string& failure = {}) {
    content_.state = ContentState::kDamaged;
    content_.use = failure.empty() ? RecordUse::kRemoved : RecordUse::kFatal;
    content_.damaged_field = field;
    content_.damage = damage;
    content_.failure = failure;
    return false;
  }

  std::string_view rest_;
  RecordContent content_;
};

}  // namespace

const char* TextOf(ContentState state) { return kStateTexts[static_cast<std::size_t>(state)]; }

IdContent JudgeIdBytes(std::string_view bytes) {
  if (bytes.empty()) return {};
  std::string text(bytes.substr(0, kReadOfIdFile));
  if (IsValidDeviceId(text)) return {ContentState::kGood, text, {}, {}};

  IdContent content{ContentState::kDamaged, {}, {}, {}};
  if (bytes.size() > kReadOfIdFile)
    content.damage = "it has more than the 8191 bytes that are read";
  for (const Repair& repair : kRepairs) {
    std::string repaired = repair.undo(text);
    if (repaired == text) continue;
    content.damage.append(content.damage.empty() ? "" : ", ").append(repair.damage);
    text = std::move(repaired);
  }
  if (IsValidDeviceId(text)) {
    content.legible = text;
    return content;
  }
  content.damage.append(content.damage.empty() ? "" : ", ").append(DescribeNoId(text));
  const std::string start = text.substr(0, kAnyId.size());
  if (IsValidDeviceId(start)) content.legible = start;
  return content;
}

RecordContent DecodeRecord(std::string_view bytes) {
  if (bytes.empty()) return {};
  RecordContent content = FieldReader(bytes).Read();
  if (content.state != ContentState::kGood || IsValidDeviceId(*content.device_id)) return content;
  // The library takes such a record for one of another id.
  const bool zeros = bytes.find_first_not_of('\0') == std::string_view::npos;
  if (zeros) content.trailing_bytes = 0;
  content.state = ContentState::kDamaged;
  content.damage =
      zeros ? "it holds only zero bytes, as a power loss leaves it" : "it names no valid id";
  return content;
}

}  // namespace system_info
