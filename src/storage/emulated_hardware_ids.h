// Hardware ids that do not come from the machine, so that a host can simulate a change of hardware.

#ifndef DEVICEID_STORAGE_EMULATED_HARDWARE_IDS_H_
#define DEVICEID_STORAGE_EMULATED_HARDWARE_IDS_H_

#include "hardware/os_manager.h"

namespace system_info {

// The unchanged lines of "hardware_ids.emulated" in the common folder, one id each. Absent if the
// file cannot be opened, present and empty if it is empty. The library never writes this file.
HardwareIdSet ReadEmulatedHardwareIds();

}  // namespace system_info

#endif  // DEVICEID_STORAGE_EMULATED_HARDWARE_IDS_H_
