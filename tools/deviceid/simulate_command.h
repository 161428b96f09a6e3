// "deviceid simulate": what would become of the id on another machine. Writes nothing but the
// picture that it is asked for.

#ifndef DEVICEID_TOOLS_DEVICEID_SIMULATE_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_SIMULATE_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command SimulateCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_SIMULATE_COMMAND_H_
