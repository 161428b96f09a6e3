// What the program for people asks of its terminal and its command line.

#ifndef DEVICEID_PLATFORM_CONSOLE_H_
#define DEVICEID_PLATFORM_CONSOLE_H_

#include <string>
#include <vector>

namespace system_info {

// The arguments behind the name of the program, in UTF-8 where the system knows their characters,
// else as they are.
std::vector<std::string> CommandLine(int argc, char** argv);

bool InputIsTerminal();
bool OutputIsTerminal();

// Lets standard output and error take UTF-8, and colours where they are a terminal. To be called
// before anything is printed.
void PrepareOutput();

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_CONSOLE_H_
