// The bytes of the file "hid_settings", put together without the library.

#ifndef DEVICEID_TESTS_SUPPORT_STORED_RECORD_H_
#define DEVICEID_TESTS_SUPPORT_STORED_RECORD_H_

#include <cstdint>
#include <string>
#include <vector>

namespace system_info {

struct StoredRecord {
  std::string version = "2.0";
  std::string device_id;
  std::int32_t hid_type = 0;
  std::int64_t date = 0;
  std::vector<std::string> ids;

  std::string Bytes() const {
    std::string bytes = Text(version) + Text(device_id);
    bytes += Number(static_cast<std::uint64_t>(hid_type), 4);
    bytes += Number(static_cast<std::uint64_t>(date), 8) + Number(ids.size(), 4);
    for (const std::string& id : ids) bytes += Text(id);
    return bytes;
  }

  static std::string Number(std::uint64_t number, int width) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xff);
    return bytes;
  }
  static std::string Text(const std::string& text) { return Number(text.size(), 4) + text; }
};

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_STORED_RECORD_H_
