#include "bench/plot/Table.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
  return fields;
}

/// @return the number behind what is no digit; 0 when there is none.
double Number(const std::string& text) {
  const std::size_t start = text.find_first_of("0123456789");
  return start == std::string::npos ? 0 : std::strtod(text.c_str() + start, nullptr);
}

template <typename Take>
void ForEachLine(const std::string& path, std::size_t fields, const Take& take) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> row = Fields(line);
    if (row.size() == fields) take(row);
  }
}

}  // namespace

std::vector<Ratio> ReadRatios(const std::string& path) {
  std::vector<Ratio> ratios;
  ForEachLine(path, 7, [&](const std::vector<std::string>& row) {
    if (Number(row[4]) == 0) return;
    const std::size_t dash = row[5].find("–");
    const std::string most = dash == std::string::npos ? row[5] : row[5].substr(dash);
    ratios.push_back({row[0], Number(row[4]), Number(row[5]), Number(most), Number(row[6])});
  });
  return ratios;
}

std::vector<Curve> ReadCurves(const std::string& path) {
  std::vector<Curve> curves;
  ForEachLine(path, 4, [&](const std::vector<std::string>& row) {
    auto found = std::find_if(curves.begin(), curves.end(),
                              [&](const Curve& curve) { return curve.title == row[0]; });
    if (found == curves.end()) found = curves.insert(found, {row[0], row[1], {}});
    found->points.emplace_back(Number(row[2]), Number(row[3]));
  });
  return curves;
}
