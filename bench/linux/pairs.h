// What is measured on Linux.

#ifndef DEVICEID_BENCH_LINUX_PAIRS_H_
#define DEVICEID_BENCH_LINUX_PAIRS_H_

#include "bench/pair.h"

namespace bench {

// The first load of the library in a process, against an empty library.
Pair FirstLoad();

// A further load with its unload, against an empty library.
Pair LoadAndUnload();

// A call for format 2.0 of a machine with a young record, against ReadSourcesOnce.
Pair NativeCall();

// The explanation that `deviceid explain` prints, against the call that it explains.
Pair Explain();

// Calls the shared library for format 2.0. Throws std::runtime_error if there is no id.
void CallLibrary();

// Opens and reads each file once that a call for format 2.0 needs.
void ReadSourcesOnce();

}  // namespace bench

#endif  // DEVICEID_BENCH_LINUX_PAIRS_H_
