// "deviceid inspect": what is stored, field by field. Writes nothing.

#ifndef DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command InspectCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_
