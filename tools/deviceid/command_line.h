// The command line of the program.

#ifndef DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_
#define DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_

#include <string>
#include <vector>

#include "tools/deviceid/command.h"

namespace deviceid {

// Runs the one of `commands` that `words` ask for and returns its exit status. The first command is
// the one without a name. Help and version are printed. Throws Failure if the words make no sense.
int RunCommandLine(const std::vector<Command>& commands, const std::vector<std::string>& words);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_COMMAND_LINE_H_
