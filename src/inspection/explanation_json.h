// An explanation as JSON, as docs/explain.schema.json describes it.

#ifndef DEVICEID_INSPECTION_EXPLANATION_JSON_H_
#define DEVICEID_INSPECTION_EXPLANATION_JSON_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "inspection/explanation.h"

namespace system_info {

// One object over several lines, without a line end behind it. Bytes that are not UTF-8 stand as
// the characters of Latin-1.
std::string ToJson(const Explanation& explanation);

// "2026-11-03T09:05:03Z", or empty for a year that has not four digits.
std::string UtcText(std::int64_t seconds);

// The other way round. False for any other text.
bool ParseUtcText(const std::string& text, std::int64_t& seconds);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_EXPLANATION_JSON_H_
