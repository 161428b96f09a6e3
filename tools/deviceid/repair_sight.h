// What a repair rests on, as it is found on this machine, and what keeps this account from making
// it.

#ifndef DEVICEID_TOOLS_DEVICEID_REPAIR_SIGHT_H_
#define DEVICEID_TOOLS_DEVICEID_REPAIR_SIGHT_H_

#include <filesystem>
#include <string>
#include <vector>

#include "inspection/played_call.h"
#include "tools/deviceid/repair_plan.h"

namespace deviceid {

// The common folder, then the one of this account, as the library builds them.
std::vector<std::string> StateFolderTexts();
std::vector<std::filesystem::path> StateFolderPaths();

RepairSight LookForRepair(system_info::HardwareSource& hardware);

// Throws Failure if a link, a folder or the like stands where a state folder or a stored file has
// its place.
void RefuseObstacles();

// Throws Failure if this account may not make `changes`, or could not bring back what they and
// `effects`, all that is different after the call that follows, replace.
void RefuseWithoutRights(const std::vector<system_info::FileChange>& changes,
                         const std::vector<system_info::FileChange>& effects);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_REPAIR_SIGHT_H_
