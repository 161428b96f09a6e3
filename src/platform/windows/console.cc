#include "platform/console.h"

#include <io.h>

#include <cstdio>

#include "platform/native_paths.h"
#include "platform/windows_api.h"
// Needs the types of the header above.
#include <shellapi.h>

namespace system_info {
namespace {

void AllowColours(DWORD stream) {
  const HANDLE console = GetStdHandle(stream);
  DWORD mode = 0;
  if (GetConsoleMode(console, &mode) == 0) return;
  SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

}  // namespace

std::vector<std::string> CommandLine(int /*argc*/, char** /*argv*/) {
  int count = 0;
  LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(ToUtf8(std::wstring(words[i])));
  LocalFree(words);
  return arguments;
}

bool InputIsTerminal() { return _isatty(_fileno(stdin)) != 0; }

bool OutputIsTerminal() { return _isatty(_fileno(stdout)) != 0; }

void PrepareOutput() {
  SetConsoleOutputCP(CP_UTF8);
  AllowColours(STD_OUTPUT_HANDLE);
  AllowColours(STD_ERROR_HANDLE);
}

}  // namespace system_info
