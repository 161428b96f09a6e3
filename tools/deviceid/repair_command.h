// "deviceid repair": gives an id back, keeps one for new hardware, begins anew, and takes that
// back.

#ifndef DEVICEID_TOOLS_DEVICEID_REPAIR_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_REPAIR_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command RepairCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_REPAIR_COMMAND_H_
