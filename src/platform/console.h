// The terminal and the command line of the program.

#ifndef DEVICEID_PLATFORM_CONSOLE_H_
#define DEVICEID_PLATFORM_CONSOLE_H_

#include <string>
#include <vector>

namespace system_info {

// The arguments after the name of the program, in UTF-8 if the system knows their encoding, else
// unchanged.
std::vector<std::string> CommandLine(int argc, char** argv);

bool InputIsTerminal();
bool OutputIsTerminal();

// Prepares standard output and error for UTF-8, and terminals for colours. Call it before printing
// anything.
void PrepareOutput();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_CONSOLE_H_
