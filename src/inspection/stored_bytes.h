// What the bytes of the stored files say, damaged or not, by the rules of the library's readers.

#ifndef DEVICEID_INSPECTION_STORED_BYTES_H_
#define DEVICEID_INSPECTION_STORED_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/device_id.h"

namespace system_info {

enum class ContentState { kGood, kEmpty, kDamaged };

// "good", "empty", "damaged".
const char* TextOf(ContentState state);

// The content of "device.idv2" or "device.id".
struct IdContent {
  ContentState state = ContentState::kEmpty;
  DeviceId id;         // If good: as it stands in the file.
  std::string damage;  // "a line end stands behind the id"
  // If damaged: the id that can still be made out.
  std::optional<DeviceId> legible;
};
IdContent JudgeIdBytes(std::string_view bytes);

// What the library does with a record.
enum class RecordUse {
  kRead,
  kRemoved,  // Damaged: it is removed and counts as missing.
  kFatal,    // Damaged: every call fails with result 3 and leaves it.
};

// The content of "hid_settings".
struct RecordContent {
  ContentState state = ContentState::kEmpty;
  RecordUse use = RecordUse::kRemoved;

  // As far as they can be read.
  std::optional<std::string> version;
  std::optional<std::string> device_id;
  std::optional<std::int32_t> type;
  std::optional<std::int64_t> date;  // Seconds since 1 January 1970 UTC.
  std::optional<std::uint32_t> count;
  std::vector<std::string> parts;  // Without empty ones, which are skipped.

  std::string damaged_field;  // "length of the version"
  std::string damage;         // "it ends in its length of the version"
  std::string failure;        // If fatal: the reason as the log tells it.
  std::uint64_t trailing_bytes = 0;
};
RecordContent DecodeRecord(std::string_view bytes);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_STORED_BYTES_H_
