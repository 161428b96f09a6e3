// "deviceid explain": why the id is what it is, and what comes next. Writes nothing.

#ifndef DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_

#include "inspection/explanation.h"
#include "tools/deviceid/command_line.h"

namespace deviceid {

// What the library would find on this machine and do there. Writes nothing.
system_info::MachineState LookAtMachine(const std::string& format);

// Returns the exit status.
int RunExplain(const Arguments& arguments);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_
