#include "platform/console.h"

#include <unistd.h>

namespace system_info {

std::vector<std::string> CommandLine(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

bool InputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool OutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

void PrepareOutput() {}

}  // namespace system_info
