// What the checks of health look at, on this machine.

#ifndef DEVICEID_TOOLS_DEVICEID_MACHINE_HEALTH_H_
#define DEVICEID_TOOLS_DEVICEID_MACHINE_HEALTH_H_

#include "inspection/health_checks.h"

namespace deviceid {

// As this account finds it. Writes nothing.
system_info::HealthFacts LookAtHealth();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_MACHINE_HEALTH_H_
