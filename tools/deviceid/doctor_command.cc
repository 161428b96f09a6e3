#include "tools/deviceid/doctor_command.h"

#include <iostream>
#include <memory>

#include "inspection/health_checks.h"
#include "tools/deviceid/machine_health.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

constexpr const char* kFooter =
    R"(Each line is OK, WARN or FAIL and says what to do. Run it as the account that
the host runs as; root also sees the ids of other accounts.

Examples:
  deviceid doctor
  deviceid doctor --json

Writes nothing.

Exit status:
  0   all is well
  10  there is a warning
  20  there is a failure
  2   wrong usage
  74  the output cannot be written)";

int Run(bool json) {
  const auto findings = system_info::CheckHealth(LookAtHealth());
  if (json) {
    std::cout << system_info::ToJson(findings) << '\n';
  } else {
    std::cout << system_info::ToText(findings, WantsColour());
  }
  return FinishOutput(system_info::StatusOf(findings));
}

}  // namespace

Command DoctorCommand() {
  const auto json = std::make_shared<bool>(false);
  return {"doctor",
          "Say whether this PC is fit to keep its id, and what to do",
          kFooter,
          {JsonOption(json.get())},
          [json] { return Run(*json); }};
}

}  // namespace deviceid
