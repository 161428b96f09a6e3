/* Times a call for format 2.0 against a program that opens and reads once what the call needs.
 *
 *   bench LIBRARY ROUNDS CALLS
 *
 * Both run in turns in this process, CALLS times in each of ROUNDS rounds. Prints the medians and
 * the ratio of each round: its median, and the range of the middle half. Processor time is what
 * counts, so that others on the machine do not. */

#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "deviceid.h"

typedef int (*get_hardware_id)(char*, uint32_t, const char*, char*, uint32_t);

static char buffer[1 << 20];

static void read_file(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  while (read(file, buffer, sizeof(buffer)) > 0) {
  }
  close(file);
}

static void read_links(const char* folder) {
  DIR* opened = opendir(folder);
  const struct dirent* entry = NULL;
  if (opened == NULL) return;
  while ((entry = readdir(opened)) != NULL) {
    (void)!readlinkat(dirfd(opened), entry->d_name, buffer, sizeof(buffer));
  }
  closedir(opened);
}

static void read_adapters(void) {
  static const char* const values[] = {"address", "addr_assign_type", "flags", "ifindex"};
  DIR* opened = opendir("/sys/class/net");
  const struct dirent* entry = NULL;
  char path[512];
  if (opened == NULL) return;
  while ((entry = readdir(opened)) != NULL) {
    if (entry->d_name[0] == '.') continue;
    for (size_t i = 0; i < sizeof(values) / sizeof(values[0]); ++i) {
      snprintf(path, sizeof(path), "/sys/class/net/%s/%s", entry->d_name, values[i]);
      read_file(path);
    }
  }
  closedir(opened);
}

static void read_once(void) {
  read_file("/var/lib/BrindleQuayWorks/device.idv2");
  read_file("/var/lib/BrindleQuayWorks/hid_settings");
  read_file("/proc/self/mountinfo");
  read_links("/dev/disk/by-uuid");
  read_file("/sys/class/dmi/id/product_serial");
  read_file("/sys/class/dmi/id/board_serial");
  read_adapters();
}

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return (double)time.tv_sec * 1e6 + (double)time.tv_nsec / 1e3;
}

static int compare(const void* left, const void* right) {
  const double difference = *(const double*)left - *(const double*)right;
  return (difference > 0) - (difference < 0);
}

int main(int count, char** arguments) {
  static char id[DEVICEID_ID_SIZE], log[DEVICEID_LOG_SIZE];
  void* library = count == 4 ? dlopen(arguments[1], RTLD_NOW) : NULL;
  get_hardware_id get = NULL;
  int rounds = 0, calls = 0;
  double *once = NULL, *call = NULL, *ratio = NULL;
  if (library == NULL) return 1;
  *(void**)&get = dlsym(library, "GetHardwareId");
  rounds = atoi(arguments[2]);
  calls = atoi(arguments[3]);
  once = calloc((size_t)rounds, sizeof(double));
  call = calloc((size_t)rounds, sizeof(double));
  ratio = calloc((size_t)rounds, sizeof(double));
  for (int round = -1; round < rounds; ++round) {
    const double start = now();
    double middle = 0;
    for (int i = 0; i < calls; ++i) read_once();
    middle = now();
    for (int i = 0; i < calls; ++i) {
      if (get(id, sizeof(id), "2.0", log, sizeof(log)) != DEVICEID_SUCCESS) return 1;
    }
    if (round < 0) continue; /* The first calls store the id. */
    once[round] = (middle - start) / calls;
    call[round] = (now() - middle) / calls;
    ratio[round] = call[round] / once[round];
  }
  qsort(once, (size_t)rounds, sizeof(double), compare);
  qsort(call, (size_t)rounds, sizeof(double), compare);
  qsort(ratio, (size_t)rounds, sizeof(double), compare);
  printf("reads %.1f us, call %.1f us, ratio %.2f (%.2f to %.2f)\n", once[rounds / 2],
         call[rounds / 2], ratio[rounds / 2], ratio[rounds / 4], ratio[rounds * 3 / 4]);
  return 0;
}
