#pragma once

#include <string>
#include <utility>
#include <vector>

/// Ratio of what was measured to what it is measured against.
struct Ratio {
  std::string what;
  double median = 0;
  double least = 0;
  double most = 0;
  double target = 0;  ///< 0: none
};

struct Curve {
  std::string title;
  std::string unit;
  std::vector<std::pair<double, double>> points;  ///< in the order of the file
};

/// @return the rows that have a ratio. @param path in, a file as scripts/measure.sh describes it.
std::vector<Ratio> ReadRatios(const std::string& path);

/// @return the curves in the order of their first points. @param path in, as above.
std::vector<Curve> ReadCurves(const std::string& path);
