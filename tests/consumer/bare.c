/* For a linker alone: ends with 42 if there is an id. */
#include "deviceid.h"

int start(void) {
  static char id[DEVICEID_ID_SIZE];
  return GetHardwareId(id, sizeof(id), "1.5", 0, 0) == DEVICEID_SUCCESS && id[1] == '-' ? 42 : 1;
}
