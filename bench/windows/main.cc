// PROGRAM ROUNDS: measures a pair on Windows.
//
// Debian has no Google Benchmark for Windows, so the rounds are counted here. The output has as
// much of that library's JSON as bench/table.py reads.

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "bench/windows/pair_program.h"

namespace bench {
namespace {

constexpr int kTimesInARound = 5;

void PrintRound(const Pair& pair) {
  double subject = 0;
  double reference = 0;
  for (int i = 0; i < kTimesInARound; ++i) {
    reference += pair.reference();
    subject += pair.subject();
  }
  std::printf("{\"subject\": %g, \"reference\": %g}", subject / kTimesInARound,
              reference / kTimesInARound);
}

void PrintRounds(int rounds) {
  const Pair pair = MakePair();
  std::printf("{\"benchmarks\": [\n");
  for (int round = 0; round < rounds; ++round) {
    if (round > 0) std::printf(",\n");
    PrintRound(pair);
  }
  std::printf("\n]}\n");
}

}  // namespace

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace bench

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  bench::PrintRounds(std::atoi(argv[1]));
  return 0;
}
