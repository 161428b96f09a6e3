// "deviceid completion": what a shell needs to complete the words of a command line.

#ifndef DEVICEID_TOOLS_DEVICEID_COMPLETION_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_COMPLETION_COMMAND_H_

#include <vector>

#include "tools/deviceid/command.h"

namespace deviceid {

// The scripts complete the words of `others` and of this command.
Command CompletionCommand(const std::vector<Command>& others);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_COMPLETION_COMMAND_H_
