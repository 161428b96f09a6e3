#include "storage/hid_settings.h"

#include <array>
#include <fstream>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "storage/storage_paths.h"
#include "support/clock.h"

namespace system_info {
namespace {

constexpr std::uint32_t kMaxHardwareIds = 256;

// The longest string of a 32-bit process. Every build refuses what is longer as that one
// does.
constexpr std::uint32_t kMaxStringLength = 0x7ffffffe;

std::string SettingsPath(const std::string& folder) {
  static const std::string kFileName = "hid_settings";
  return folder + PathSeparator() + kFileName;
}

// Every read gives true while the stream is good.

template <typename Integer>
bool ReadInteger(std::istream& input, Integer& value) {
  std::array<char, sizeof(Integer)> bytes = {};
  input.read(bytes.data(), bytes.size());
  std::make_unsigned_t<Integer> bits = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    bits = static_cast<decltype(bits)>(bits << 8 | static_cast<std::uint8_t>(bytes[i]));
  }
  value = static_cast<Integer>(bits);
  return input.good();
}

bool ReadBytes(std::istream& input, std::uint32_t length, std::string& text) {
  if (length > kMaxStringLength) throw std::length_error("basic_string::resize");
  text.resize(length);
  input.read(text.data(), static_cast<std::streamsize>(length));
  return input.good();
}

bool ReadString(std::istream& input, std::string& text) {
  std::uint32_t length = 0;
  return ReadInteger(input, length) && ReadBytes(input, length, text);
}

bool ReadHardwareIds(std::istream& input, std::vector<std::string>& hardware_ids) {
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

bool ReadFields(std::istream& input, HidSettings& settings) {
  std::string version;
  if (!ReadString(input, version)) return false;
  settings.version = HidFormatVersion(version);
  std::int32_t hid_type = 0;
  if (!ReadString(input, settings.device_id) || !ReadInteger(input, hid_type)) return false;
  settings.hid_type = static_cast<HidType>(hid_type);
  return ReadInteger(input, settings.last_write_date) &&
         ReadHardwareIds(input, settings.hardware_ids);
}

// Every write gives true while the stream is good.

template <typename Integer>
bool WriteInteger(std::ostream& output, Integer value) {
  std::array<char, sizeof(Integer)> bytes = {};
  auto bits = static_cast<std::make_unsigned_t<Integer>>(value);
  for (char& byte : bytes) {
    byte = static_cast<char>(bits & 0xff);
    bits = static_cast<decltype(bits)>(bits >> 8);
  }
  return output.write(bytes.data(), bytes.size()).good();
}

bool WriteString(std::ostream& output, const std::string& text) {
  return WriteInteger(output, static_cast<std::uint32_t>(text.size())) &&
         output.write(text.data(), static_cast<std::streamsize>(text.size())).good();
}

bool WriteFields(std::ostream& output, const std::string& version, const HidSettings& settings) {
  if (!WriteString(output, version) || !WriteString(output, settings.device_id) ||
      !WriteInteger(output, static_cast<std::int32_t>(settings.hid_type)) ||
      !WriteInteger(output, PresentSeconds()) ||
      !WriteInteger(output, static_cast<std::uint32_t>(settings.hardware_ids.size()))) {
    return false;
  }
  for (const std::string& id : settings.hardware_ids) {
    if (!WriteString(output, id)) return false;
  }
  return true;
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
  std::ifstream input(path, std::ios::binary);
  if (!input.is_open()) return std::nullopt;
  HidSettings settings(HidFormatVersion(), HidType::Generated, {}, {});
  if (ReadFields(input, settings)) return settings;
  input.close();
  RemoveFile(path);
  return std::nullopt;
}

bool WriteHidSettingsFile(const HidSettings& settings, const std::string& folder) {
  if (settings.hardware_ids.size() > kMaxHardwareIds || !EnsureDirectory(folder)) return false;
  // With a buffer of its own the stream needs no memory once the old record is gone.
  std::array<char, 4096> buffer = {};
  std::ofstream output;
  output.rdbuf()->pubsetbuf(buffer.data(), buffer.size());
  const std::string version = settings.version.ToString();
  output.open(SettingsPath(folder), std::ios::binary | std::ios::trunc);
  return output.is_open() && WriteFields(output, version, settings);
}

}  // namespace system_info
