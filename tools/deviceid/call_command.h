// The program without a command: the call that a host makes.

#ifndef DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command CallCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_
