#include "host/common/ApiUtility.h"

#include <mutex>
#include <random>

#include "reference_host/base/RetryWait.h"
#include "reference_host/configuration/ConfigurationFile.h"

namespace {

/// @return a number from 0 to 1. Each process has a sequence of its own: devices that were started
/// by the same event must not wait in step.
double Random() {
  static std::mutex mutex;
  static std::mt19937_64 engine{std::random_device{}()};
  const std::scoped_lock lock(mutex);
  return std::uniform_real_distribution<double>(0, 1)(engine);
}

}  // namespace

namespace ZLT {

unsigned int ApiUtility::GetSleepDurationInMillis(const int& retryCount, const int& minSeconds,
                                                  const int& maxSeconds) {
  const unsigned int wait =
      refhost::RetryWaitMilliseconds(retryCount, minSeconds, maxSeconds, Random());
  return static_cast<unsigned int>(wait * refhost::Settings().retryWaitScale);
}

}  // namespace ZLT
