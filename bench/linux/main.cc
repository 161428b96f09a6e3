// The benchmarks on Linux. They store an id: bench/run gives them state folders of their own.

#include <benchmark/benchmark.h>

#include <ctime>

#include "bench/linux/pairs.h"

namespace bench {
namespace {

// The loads come first: a call leaves the library loaded.
constexpr NamedPair kPairs[] = {
    {"first_load", FirstLoad},
    {"load", LoadAndUnload},
    {"call", NativeCall},
    {"explain", Explain},
};

void Measure(benchmark::State& state, Pair (*make)()) {
  const Pair pair = make();
  double subject = 0;
  double reference = 0;
  for ([[maybe_unused]] auto iteration : state) {
    reference += pair.reference();
    const double seconds = pair.subject();
    state.SetIterationTime(seconds);
    subject += seconds;
  }
  const auto count = static_cast<double>(state.iterations());
  state.counters["subject"] = subject / count;
  state.counters["reference"] = reference / count;
}

}  // namespace

double Now() {
  std::timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  for (const auto& [name, make] : bench::kPairs) {
    benchmark::RegisterBenchmark(name, bench::Measure, make)->UseManualTime();
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
