#include "reference_host/base/RetryWait.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace refhost {

unsigned int RetryWaitMilliseconds(int retry, int minSeconds, int maxSeconds, double random) {
  constexpr double Retries = 3;
  constexpr double Longest = 0xFFFFFFFE;
  const double low = std::max(minSeconds, 1) * 1000.0;
  const double high = std::max(maxSeconds * 1000.0, low);
  const double step = std::clamp(retry, 0, 2) + 1;
  const double bound = std::min(low * std::pow(high / low, step / Retries), high);
  const double shortest = std::max(low, bound / 2);
  const double share = random >= 0 ? std::min(random, 1.0) : 0.0;
  const double wait = shortest + (bound - shortest) * share;
  return static_cast<unsigned int>(std::min(wait, Longest));
}

}  // namespace refhost
