#include "tools/tolmarctl/Pace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "tools/common/TerminalText.h"

namespace {

constexpr double WindowSeconds = 10;
constexpr double LeastSeconds = 1;  ///< below it a rate says little
constexpr int BarWidth = 30;

template <typename... Values>
std::string Formatted(const char* format, Values... values) {
  char text[64];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

double AmountOf(const Progress& progress) {
  return progress.totalBytes > 0 ? static_cast<double>(progress.bytes) : progress.percent;
}

double WholeOf(const Progress& progress) {
  return progress.totalBytes > 0 ? static_cast<double>(progress.totalBytes) : 100;
}

}  // namespace

void Pace::Add(double seconds, const Progress& progress) {
  const bool isSame = progress.title == _newest.title && progress.status == _newest.status &&
                      progress.totalBytes == _newest.totalBytes &&
                      AmountOf(progress) >= AmountOf(_newest);
  if (!isSame) _samples.clear();
  _newest = progress;
  _samples.push_back({seconds, AmountOf(progress)});
  while (_samples.front().seconds < seconds - WindowSeconds) _samples.pop_front();
}

std::optional<double> Pace::AmountPerSecond() const {
  if (_newest.status != "downloading") return {};
  const double seconds = _samples.back().seconds - _samples.front().seconds;
  if (seconds < LeastSeconds) return {};
  return (_samples.back().amount - _samples.front().amount) / seconds;
}

std::optional<double> Pace::BytesPerSecond() const {
  return _newest.totalBytes > 0 ? AmountPerSecond() : std::nullopt;
}

std::optional<double> Pace::SecondsLeft() const {
  const double rate = AmountPerSecond().value_or(0);
  if (rate <= 0) return {};
  return std::max(0.0, WholeOf(_newest) - AmountOf(_newest)) / rate;
}

std::string SizeText(double bytes) {
  constexpr std::array<const char*, 4> Units{"B", "kB", "MB", "GB"};
  std::size_t unit = 0;
  // 999.95 would be shown as 1000.0.
  for (; bytes >= (unit == 0 ? 1000 : 999.95) && unit + 1 < Units.size(); ++unit) bytes /= 1000;
  return Formatted(unit == 0 ? "%.0f " : "%.1f ", bytes) + Units[unit];
}

std::string TimeText(double seconds) {
  const double whole = std::ceil(seconds);
  if (whole < 60) return Formatted("%.0f s", whole);
  if (whole < 3600)
    return Formatted("%.0f min %02.0f s", std::floor(whole / 60), std::fmod(whole, 60));
  const double minutes = std::ceil(seconds / 60);
  return Formatted("%.0f h %02.0f min", std::floor(minutes / 60), std::fmod(minutes, 60));
}

std::string BarOf(const Progress& progress, const Pace& pace, std::size_t columns) {
  const int percent = std::clamp(progress.percent, 0, 100);
  std::string bar(static_cast<std::size_t>(percent * BarWidth / 100), '#');
  bar.resize(BarWidth, '-');
  std::string line = Printable(progress.title) + " [" + bar + "] " + Formatted("%3d %% ", percent) +
                     Printable(progress.status);
  std::string more;
  if (progress.totalBytes > 0) {
    more += "  " + SizeText(static_cast<double>(progress.bytes)) + " of " +
            SizeText(static_cast<double>(progress.totalBytes));
  }
  if (const auto rate = pace.BytesPerSecond()) more += "  " + SizeText(*rate) + "/s";
  if (const auto left = pace.SecondsLeft()) more += "  " + TimeText(*left) + " left";
  // A line that the terminal breaks could not be drawn over.
  if (DisplayWidth(line + more) <= columns) line += more;
  return DisplayWidth(line) <= columns ? line : Formatted("%3d %%", percent);
}

Json::Value ObjectOf(const Progress& progress, const Pace& pace) {
  Json::Value object;
  object["type"] = "progress";
  object["l1FruPn"] = progress.title;
  object["status"] = progress.status;
  object["percent"] = std::clamp(progress.percent, 0, 100);
  if (progress.totalBytes > 0) {
    object["bytes"] = static_cast<Json::UInt64>(progress.bytes);
    object["totalBytes"] = static_cast<Json::UInt64>(progress.totalBytes);
  }
  if (const auto rate = pace.BytesPerSecond()) object["bytesPerSecond"] = std::floor(*rate);
  if (const auto left = pace.SecondsLeft()) object["secondsLeft"] = std::ceil(*left);
  return object;
}
