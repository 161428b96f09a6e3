// deviceid: prints the id of this PC and, with a command, how it came about and what is stored.

#include <exception>

#include "platform/console.h"
#include "tools/deviceid/call_command.h"
#include "tools/deviceid/command_line.h"
#include "tools/deviceid/explain_command.h"
#include "tools/deviceid/inspect_command.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

int Run(const Arguments& arguments) {
  switch (arguments.command) {
    case Command::kExplain:
      return RunExplain(arguments);
    case Command::kInspect:
      return RunInspect(arguments);
    case Command::kCall:
      break;
  }
  return RunCall(arguments);
}

}  // namespace
}  // namespace deviceid

// NOLINTNEXTLINE(bugprone-exception-escape): only a complaint about a failure can fail here
int main(int argc, char** argv) {
  try {
    system_info::PrepareOutput();
    const auto arguments = deviceid::ParseCommandLine(system_info::CommandLine(argc, argv));
    return arguments ? deviceid::Run(*arguments) : deviceid::FinishOutput(deviceid::kGood);
  } catch (const deviceid::Failure& failure) {
    deviceid::Complain(failure.what());
    return failure.status();
  } catch (const std::exception& failure) {
    deviceid::Complain(failure.what());
    return deviceid::kFailed;
  }
}
