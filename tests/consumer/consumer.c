/* Prints the id of this PC. */
#include <stdio.h>

#include "deviceid.h"

int main(void) {
  char id[DEVICEID_ID_SIZE];
  if (GetHardwareId(id, sizeof(id), "1.5", NULL, 0) != DEVICEID_SUCCESS) return 1;
  return puts(id) < 0;
}
