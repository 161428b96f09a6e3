// One pair of benchmarks on Windows: each is a program of its own, so that it loads no DLL that
// another one needs.

#ifndef DEVICEID_BENCH_WINDOWS_PAIR_PROGRAM_H_
#define DEVICEID_BENCH_WINDOWS_PAIR_PROGRAM_H_

#include "bench/pair.h"

namespace bench {

Pair MakePair();

}  // namespace bench

#endif  // DEVICEID_BENCH_WINDOWS_PAIR_PROGRAM_H_
