/*
 * load LIBRARY EMPTY_LIBRARY: how long loading and unloading LIBRARY takes over EMPTY_LIBRARY.
 *
 * On Linux each first load happens in a process of its own. Both libraries are loaded in turns, so
 * that what else the machine does falls on both.
 */
#include <stdio.h>
#include <stdlib.h>

enum { kRounds = 200 };

#if defined(_WIN32)
#include <windows.h>

static double Now(void) {
  LARGE_INTEGER count, frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return (double)count.QuadPart / (double)frequency.QuadPart;
}

static void* Load(const char* path) { return LoadLibraryA(path); }
static void Unload(void* library) { FreeLibrary(library); }
#else
#include <dlfcn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static void* Load(const char* path) { return dlopen(path, RTLD_NOW); }
static void Unload(void* library) { dlclose(library); }

static double FirstLoad(const char* path) {
  int ends[2];
  double seconds = 0;
  if (pipe(ends) != 0) exit(1);
  if (fork() == 0) {
    double start = Now();
    if (Load(path) == NULL) _exit(1);
    seconds = Now() - start;
    _exit(write(ends[1], &seconds, sizeof(seconds)) != sizeof(seconds));
  }
  wait(NULL);
  if (read(ends[0], &seconds, sizeof(seconds)) != sizeof(seconds)) exit(1);
  close(ends[0]);
  close(ends[1]);
  return seconds;
}
#endif

static double LoadAndUnload(const char* path) {
  double start = Now();
  void* library = Load(path);
  if (library == NULL) exit(1);
  Unload(library);
  return Now() - start;
}

static int Compare(const void* left, const void* right) {
  double difference = *(const double*)left - *(const double*)right;
  return (difference > 0) - (difference < 0);
}

static void Print(const char* what, double (*measure)(const char*), char** paths) {
  static double times[2][kRounds];
  int round, which;
  for (round = 0; round < kRounds; ++round) {
    for (which = 0; which < 2; ++which) times[which][round] = measure(paths[which]);
  }
  for (which = 0; which < 2; ++which) qsort(times[which], kRounds, sizeof(double), Compare);
  printf("%-16s %8.1f us  over empty %8.1f us  ratio %.2f (quartiles %.2f to %.2f)\n", what,
         times[0][kRounds / 2] * 1e6, times[1][kRounds / 2] * 1e6,
         times[0][kRounds / 2] / times[1][kRounds / 2],
         times[0][kRounds / 4] / times[1][kRounds / 4],
         times[0][3 * kRounds / 4] / times[1][3 * kRounds / 4]);
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
#if !defined(_WIN32)
  Print("first load", FirstLoad, argv + 1);
#endif
  LoadAndUnload(argv[1]);
  LoadAndUnload(argv[2]);
  Print("load and unload", LoadAndUnload, argv + 1);
  return 0;
}
