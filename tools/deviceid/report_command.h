// "deviceid report": a case file for support, with or without what identifies a machine.

#ifndef DEVICEID_TOOLS_DEVICEID_REPORT_COMMAND_H_
#define DEVICEID_TOOLS_DEVICEID_REPORT_COMMAND_H_

#include "tools/deviceid/command.h"

namespace deviceid {

Command ReportCommand();

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_REPORT_COMMAND_H_
