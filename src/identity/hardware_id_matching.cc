#include "identity/hardware_id_matching.h"

#include <algorithm>
#include <array>

namespace system_info {
namespace {

struct MatchThreshold {
  std::size_t compared;
  std::size_t required;
};

constexpr std::array<MatchThreshold, 10> MatchThresholds = {{
    {1, 1},
    {2, 2},
    {3, 3},
    {4, 3},
    {5, 3},
    {6, 4},
    {7, 5},
    {8, 6},
    {9, 7},
    {10, 7},
}};

}  // namespace

bool MatchHardwareIds(const std::vector<std::string>& stored,
                      const std::vector<std::string>& runtime, int& matches) {
  const std::size_t compared = std::min(stored.size(), runtime.size());
  std::size_t equal = 0;
  for (std::size_t i = 0; i < compared; ++i) {
    if (stored[i] == runtime[i]) ++equal;
  }
  matches = static_cast<int>(equal);
  return equal >= RequiredMatches(compared);
}

std::size_t RequiredMatches(std::size_t compared) {
  for (const MatchThreshold& row : MatchThresholds) {
    if (row.compared == compared) return row.required;
  }
  // Comparing nothing is never a match, so at least one match is required.
  return compared == 0 ? 1 : compared * 6 / 10 + 1;
}

}  // namespace system_info
