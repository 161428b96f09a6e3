// This machine, or one that differs from it, as the explanation wants it.

#ifndef DEVICEID_TOOLS_DEVICEID_MACHINE_STATE_H_
#define DEVICEID_TOOLS_DEVICEID_MACHINE_STATE_H_

#include <string>

#include "inspection/explanation.h"
#include "inspection/played_call.h"

namespace deviceid {

// Throws Failure if the library does not know `format`.
void CheckFormat(const std::string& format);

// What the library would find and do with `hardware` and under `pretence`. Writes nothing.
system_info::MachineState LookAtMachine(const std::string& format,
                                        system_info::HardwareSource& hardware,
                                        const system_info::Pretence& pretence = {});

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_MACHINE_STATE_H_
