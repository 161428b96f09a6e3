#include "storage/hid_settings.h"

#include <array>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "support/clock.h"
#include "support/file_operations.h"
#include "support/folder_paths.h"

namespace system_info {
namespace {

constexpr const char* kFileName = "hid_settings";

constexpr std::uint32_t kMaxHardwareIds = 256;

// The longest string of a 32-bit process. A 64-bit build refuses longer ones as well, so that all
// builds treat a record alike.
constexpr std::uint32_t kMaxStringLength = 0x7ffffffe;

std::string SettingsPath(const std::string& folder) { return folder + PathSeparator() + kFileName; }

// Every read returns true if the field is complete.

template <typename Integer>
bool ReadInteger(InputFile& input, Integer& value) {
  std::array<char, sizeof(Integer)> bytes = {};
  if (input.Read(bytes.data(), bytes.size()) != bytes.size()) return false;
  std::make_unsigned_t<Integer> bits = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    bits = static_cast<decltype(bits)>(bits << 8 | static_cast<std::uint8_t>(bytes[i]));
  }
  value = static_cast<Integer>(bits);
  return true;
}

bool ReadBytes(InputFile& input, std::uint32_t length, std::string& text) {
  if (length > kMaxStringLength) throw std::length_error("basic_string::resize");
  text.resize(length);
  return input.Read(text.data(), length) == length;
}

bool ReadString(InputFile& input, std::string& text) {
  std::uint32_t length = 0;
  return ReadInteger(input, length) && ReadBytes(input, length, text);
}

bool ReadHardwareIds(InputFile& input, std::vector<std::string>& hardware_ids) {
  std::uint32_t count = 0;
  if (!ReadInteger(input, count) || count > kMaxHardwareIds) return false;
  hardware_ids.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t length = 0;
    if (!ReadInteger(input, length)) return false;
    if (length == 0) continue;
    std::string id;
    if (!ReadBytes(input, length, id)) return false;
    hardware_ids.push_back(std::move(id));
  }
  return true;
}

bool ReadFields(InputFile& input, HidSettings& settings) {
  std::string version;
  if (!ReadString(input, version)) return false;
  settings.version = HidFormatVersion(version);
  std::int32_t hid_type = 0;
  if (!ReadString(input, settings.device_id) || !ReadInteger(input, hid_type)) return false;
  settings.hid_type = static_cast<HidType>(hid_type);
  return ReadInteger(input, settings.last_write_date) &&
         ReadHardwareIds(input, settings.hardware_ids);
}

template <typename Integer>
std::array<char, sizeof(Integer)> BytesOf(Integer value) {
  std::array<char, sizeof(Integer)> bytes = {};
  auto bits = static_cast<std::make_unsigned_t<Integer>>(value);
  for (char& byte : bytes) {
    byte = static_cast<char>(bits & 0xff);
    bits = static_cast<decltype(bits)>(bits >> 8);
  }
  return bytes;
}

template <typename Integer>
void AppendInteger(std::string& bytes, Integer value) {
  const auto appended = BytesOf(value);
  bytes.append(appended.data(), appended.size());
}

void AppendString(std::string& bytes, const std::string& text) {
  AppendInteger(bytes, static_cast<std::uint32_t>(text.size()));
  bytes += text;
}

// The bytes of a record, in the order of the file, and the offset of the date.
struct RecordBytes {
  std::string bytes;
  std::size_t date_position = 0;
};

RecordBytes MakeBytes(const HidSettings& settings) {
  RecordBytes record;
  AppendString(record.bytes, settings.version.ToString());
  AppendString(record.bytes, settings.device_id);
  AppendInteger(record.bytes, static_cast<std::int32_t>(settings.hid_type));
  record.date_position = record.bytes.size();
  AppendInteger(record.bytes, std::int64_t{0});
  AppendInteger(record.bytes, static_cast<std::uint32_t>(settings.hardware_ids.size()));
  for (const std::string& id : settings.hardware_ids) AppendString(record.bytes, id);
  return record;
}

}  // namespace

HidSettings::HidSettings(HidFormatVersion format, HidType type, std::string id,
                         std::vector<std::string> ids)
    : version(format),
      device_id(std::move(id)),
      hid_type(type),
      last_write_date(PresentSeconds()),
      hardware_ids(std::move(ids)) {}

std::optional<HidSettings> LoadHidSettings() {
  auto settings = ReadHidSettingsFile(CommonFolderPath(false));
  return settings ? settings : ReadHidSettingsFile(UserFolderPath(false));
}

bool SaveHidSettings(const HidSettings& settings) {
  return WriteHidSettingsFile(settings, CommonFolderPath(false)) ||
         WriteHidSettingsFile(settings, UserFolderPath(false));
}

std::optional<HidSettings> ReadHidSettingsFile(const std::string& folder) {
  const std::string path = SettingsPath(folder);
  InputFile input(path);
  if (!input.is_open()) return std::nullopt;
  HidSettings settings(HidFormatVersion(), HidType::Generated, {}, {});
  if (ReadFields(input, settings)) return settings;
  input.Close();
  RemoveFile(path);
  return std::nullopt;
}

bool WriteHidSettingsFile(const HidSettings& settings, const std::string& folder) {
  if (settings.hardware_ids.size() > kMaxHardwareIds || !EnsureDirectory(folder)) return false;
  // Made before the file is opened: no memory is needed once the old record is gone.
  RecordBytes record = MakeBytes(settings);
  OutputFile output(SettingsPath(folder));
  if (!output.is_open()) return false;
  const auto date = BytesOf(PresentSeconds());
  record.bytes.replace(record.date_position, date.size(), date.data(), date.size());
  return output.Write(record.bytes);
}

}  // namespace system_info
