// The comparison of two lists of hardware ids, which forgives a changed part.

#ifndef DEVICEID_IDENTITY_HARDWARE_ID_MATCHING_H_
#define DEVICEID_IDENTITY_HARDWARE_ID_MATCHING_H_

#include <cstddef>
#include <string>
#include <vector>

namespace system_info {

// Counts the positions at which both lists hold the same bytes, up to the length of the shorter
// list, and puts the count into `matches`. True if the count reaches RequiredMatches of the
// positions that were compared; never true if a list is empty.
bool MatchHardwareIds(const std::vector<std::string>& stored,
                      const std::vector<std::string>& runtime, int& matches);

// How many of `compared` positions have to agree.
std::size_t RequiredMatches(std::size_t compared);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_HARDWARE_ID_MATCHING_H_
