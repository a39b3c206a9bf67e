#include "bench/common/Samples.h"

#include <cstdio>

void PrintSample(const char* name, double value) {
  std::printf("%s %.4f\n", name, value);
  std::fflush(stdout);
}

void Compare(const Rounds& rounds, const Side& agent, const Side& floor) {
  for (int round = rounds.first; round < rounds.first + rounds.count; ++round) {
    if (round % 2 == 0) PrintSample("agent", agent());
    if (floor) PrintSample("floor", floor());
    if (round % 2 != 0) PrintSample("agent", agent());
  }
}
