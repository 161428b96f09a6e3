// The program without a command: the call that a host makes.

#ifndef DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_

#include "tools/deviceid/command_line.h"

namespace deviceid {

// Returns the exit status.
int RunCall(const Arguments& arguments);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_CALL_COMMAND_H_
