#include "reference_host/base/RetryWait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using refhost::RetryWaitMilliseconds;

TEST(RetryWait, GrowsGeometricallyWithEqualJitter) {
  // Bounds for 60 to 1800 s: 60 * 30^(1/3, 2/3, 1); for 2 to 900 s: 2 * 450^(1/3, 2/3, 1).
  const struct {
    int retry, min, max;
    unsigned int shortest, longest;
  } rows[] = {
      {0, 60, 1800, 93217, 186434}, {1, 60, 1800, 289646, 579293}, {2, 60, 1800, 900000, 1800000},
      {0, 2, 900, 7663, 15326},     {1, 2, 900, 58723, 117446},    {2, 2, 900, 450000, 900000},
      {0, 10, 20, 10000, 12599},    {0, 5, 5, 5000, 5000},
  };
  for (const auto& row : rows) {
    EXPECT_NEAR(RetryWaitMilliseconds(row.retry, row.min, row.max, 0), row.shortest, 1);
    EXPECT_NEAR(RetryWaitMilliseconds(row.retry, row.min, row.max, 1), row.longest, 1);
    EXPECT_NEAR(RetryWaitMilliseconds(row.retry, row.min, row.max, 0.5),
                (row.shortest + row.longest) / 2.0, 1);
  }
}

TEST(RetryWait, StaysWithinItsBoundsWhateverItIsGiven) {
  constexpr int Least = std::numeric_limits<int>::min();
  constexpr int Most = std::numeric_limits<int>::max();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const int retry : {Least, -1, 0, 1, 2, 3, Most}) {
    for (const int min : {Least, -5, 0, 1, 60, 1000000, Most}) {
      for (const int max : {Least, 0, 1, 60, 1800, Most}) {
        const double low = std::max(min, 1) * 1000.0;
        const double high = std::min(std::max(max * 1000.0, low), double{0xFFFFFFFE});
        for (const double random : {-1.0, 0.0, 0.3, 1.0, 7.0, nan}) {
          const unsigned int wait = RetryWaitMilliseconds(retry, min, max, random);
          EXPECT_GE(wait, std::min(low, high));
          EXPECT_LE(wait, high);
          EXPECT_EQ(wait, RetryWaitMilliseconds(retry, min, max, random)) << "not pure";
        }
      }
    }
  }
}

TEST(RetryWait, SpreadsAFleetEvenlyAtEveryStepAndWaitsLongerAtTheNext) {
  constexpr int Devices = 1000;
  constexpr int Parts = 10;
  const struct { int min, max; } windows[] = {{60, 1800}, {2, 900}, {1, 8}, {30, 86400}};
  for (const auto& window : windows) {
    unsigned int before = 0;
    for (const int retry : {0, 1, 2}) {
      const auto wait = [&](double random) {
        return RetryWaitMilliseconds(retry, window.min, window.max, random);
      };
      const double range = wait(1) - wait(0);
      EXPECT_GE(range, 0.49 * wait(1)) << window.max << " s, retry " << retry;
      EXPECT_GE(wait(0), before);
      before = wait(0);
      int parts[Parts + 1] = {};
      for (int i = 0; i < Devices; ++i) {
        ++parts[static_cast<int>((wait((i + 0.5) / Devices) - wait(0)) / range * Parts)];
      }
      for (int part = 0; part < Parts; ++part) EXPECT_NEAR(parts[part], Devices / Parts, 2);
    }
  }
}

}  // namespace
