// "deviceid doctor": whether this machine is fit to have an id that stays. Writes nothing.

#ifndef DEVICEID_TOOLS_DEVICEID_DOCTOR_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_DOCTOR_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command DoctorCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_DOCTOR_COMMAND_H_
