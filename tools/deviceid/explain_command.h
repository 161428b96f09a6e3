// "deviceid explain": why the id is what it is, and what comes next. Writes nothing.

#ifndef DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command ExplainCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_EXPLAIN_COMMAND_H_
