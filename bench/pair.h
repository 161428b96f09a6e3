// Two ways to do the same work, measured in turns so that what else the machine does falls on both.

#ifndef DEVICEID_BENCH_PAIR_H_
#define DEVICEID_BENCH_PAIR_H_

#include <functional>

namespace bench {

struct Pair {
  // Each does its work once and returns the seconds that it took.
  std::function<double()> subject;
  std::function<double()> reference;
};

struct NamedPair {
  const char* name;
  Pair (*make)();
};

// The seconds that this process has used: of a processor on Linux, of the clock on Windows, where
// part of the work is done by another process.
double Now();

template <typename Work>
double TimeOf(Work work) {
  const double start = Now();
  work();
  return Now() - start;
}

template <typename Work>
std::function<double()> Timed(Work work) {
  return [work] { return TimeOf(work); };
}

}  // namespace bench

#endif  // DEVICEID_BENCH_PAIR_H_
