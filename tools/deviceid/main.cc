// deviceid: prints the id of this PC and, with a command, how it came about and what is stored.

#include <exception>
#include <vector>

#include "platform/console.h"
#include "tools/deviceid/call_command.h"
#include "tools/deviceid/command_line.h"
#include "tools/deviceid/completion_command.h"
#include "tools/deviceid/doctor_command.h"
#include "tools/deviceid/explain_command.h"
#include "tools/deviceid/inspect_command.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/repair_command.h"
#include "tools/deviceid/report_command.h"
#include "tools/deviceid/simulate_command.h"

// NOLINTNEXTLINE(bugprone-exception-escape): only a complaint about a failure can fail here
int main(int argc, char** argv) {
  try {
    system_info::PrepareOutput();
    std::vector<deviceid::Command> commands = {
        deviceid::CallCommand(),    deviceid::ExplainCommand(), deviceid::InspectCommand(),
        deviceid::DoctorCommand(),  deviceid::RepairCommand(),  deviceid::ReportCommand(),
        deviceid::SimulateCommand()};
    commands.push_back(deviceid::CompletionCommand(commands));
    return deviceid::RunCommandLine(commands, system_info::CommandLine(argc, argv));
  } catch (const deviceid::Failure& failure) {
    deviceid::Complain(failure.what());
    return failure.status();
  } catch (const std::exception& failure) {
    deviceid::Complain(failure.what());
    return deviceid::kFailed;
  }
}
