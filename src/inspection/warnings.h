// What may become a problem, or explains one, without deciding the next call.

#ifndef DEVICEID_INSPECTION_WARNINGS_H_
#define DEVICEID_INSPECTION_WARNINGS_H_

#include <vector>

#include "inspection/explanation.h"
#include "inspection/log_facts.h"

namespace system_info {

// About values: placeholders, shared or passing addresses, other spellings.
void WarnOfParts(const std::vector<Part>& parts, std::vector<Warning>& warnings);

// About stored files: damaged, unreadable, longer than they need be.
void WarnOfFiles(const std::vector<StateFolder>& folders, std::vector<Warning>& warnings);

// About what a call met: values and folders that fail, an adapter that had to do, a clock set back.
void WarnOfCall(const LogFacts& facts, std::vector<Warning>& warnings);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_WARNINGS_H_
