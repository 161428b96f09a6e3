// "deviceid inspect": what is stored, field by field. Writes nothing.

#ifndef DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_

#include "tools/deviceid/command_line.h"

namespace deviceid {

// Returns the exit status: 0 if all files are good and agree, else 10.
int RunInspect(const Arguments& arguments);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_INSPECT_COMMAND_H_
