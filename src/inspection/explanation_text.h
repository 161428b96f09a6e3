// An explanation as people read it: 80 columns, nothing in it that a terminal would obey.

#ifndef DEVICEID_INSPECTION_EXPLANATION_TEXT_H_
#define DEVICEID_INSPECTION_EXPLANATION_TEXT_H_

#include <cstdint>
#include <functional>
#include <string>

#include "inspection/explanation.h"

namespace system_info {

struct TextStyle {
  bool colour = false;
  // The local date of a time in seconds since 1 January 1970 UTC: "2026-11-03".
  std::function<std::string(std::int64_t)> date;
};

// Lines of UTF-8, the last one with its line end.
std::string ToText(const Explanation& explanation, const TextStyle& style);

// Adds the label, the changes of a machine that is only simulated, and `then`.
void AddChanges(std::string& text, const std::vector<SimulatedChange>& changes,
                const std::string& then);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_EXPLANATION_TEXT_H_
