#include "bench/herd/Policies.h"

#include <algorithm>

#include "reference_host/base/RetryWait.h"

namespace herd {
namespace {

// The agent's window after 500, 503, 504 and after a connection that did not come about.
constexpr int MinSeconds = 60;
constexpr int MaxSeconds = 1800;
constexpr unsigned int Least = MinSeconds * 1000;
constexpr unsigned int Most = MaxSeconds * 1000;

unsigned int Between(unsigned int low, unsigned int high, double random) {
  return low + static_cast<unsigned int>((high - low) * random);
}

/// The textbook's bound. It starts at twice the least wait, since at the least wait itself there is
/// no room for jitter.
unsigned int Doubled(int retry) { return std::min(Least << (retry + 1), Most); }

unsigned int Ours(int retry, unsigned int, double random) {
  return refhost::RetryWaitMilliseconds(retry, MinSeconds, MaxSeconds, random);
}

unsigned int FixedLeast(int, unsigned int, double) { return Least; }

/// The same time spent waiting as ours on average, so that only the spread differs.
unsigned int FixedMean(int, unsigned int, double) {
  return (Ours(0, 0, 0.5) + Ours(1, 0, 0.5) + Ours(2, 0, 0.5)) / MaxRetries;
}

unsigned int Full(int retry, unsigned int, double random) {
  return Between(Least, Doubled(retry), random);
}

unsigned int Equal(int retry, unsigned int, double random) {
  return Between(std::max(Least, Doubled(retry) / 2), Doubled(retry), random);
}

unsigned int Decorrelated(int, unsigned int previous, double random) {
  return Between(Least, std::min(std::max(previous, Least) * 3, Most), random);
}

/// Our bounds with full jitter: tells what of the effect is the growth's and what the jitter's.
unsigned int FullBelowOurBounds(int retry, unsigned int, double random) {
  return Between(Least, Ours(retry, 0, 1), random);
}

}  // namespace

const std::vector<Policy>& Policies() {
  static const std::vector<Policy> policies{
      {"fixed, the least wait", FixedLeast},    {"fixed, our mean wait", FixedMean},
      {"full jitter, doubling", Full},          {"equal jitter, doubling", Equal},
      {"decorrelated jitter", Decorrelated},    {"full jitter, our growth", FullBelowOurBounds},
      {"ours: equal jitter, our growth", Ours},
  };
  return policies;
}

unsigned int LongestRetries() { return Ours(0, 0, 1) + Ours(1, 0, 1) + Ours(2, 0, 1); }

}  // namespace herd
