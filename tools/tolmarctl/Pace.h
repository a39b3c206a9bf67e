#pragma once

#include <json/value.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

/// How an installation is getting on, at one moment.
struct Progress {
  std::string title;   ///< its part number
  std::string status;  ///< the agent's word
  int percent = 0;     ///< of the module that is being fetched or installed
  std::uint64_t bytes = 0;
  std::uint64_t totalBytes = 0;  ///< 0: not known
};

/// How quickly it is getting on, by what it did in the last seconds. While files are fetched only:
/// nobody knows how long an installer takes.
class Pace {
 public:
  /// @param seconds in, on a clock that only goes forward.
  void Add(double seconds, const Progress& progress);

  /// @return bytes a second; nothing when bytes are not known, or too little has been seen.
  std::optional<double> BytesPerSecond() const;

  /// @return seconds until the module is there, by its bytes, or its percent where they are not
  /// known; nothing when too little has been seen or nothing moves.
  std::optional<double> SecondsLeft() const;

 private:
  struct Sample {
    double seconds;
    double amount;
  };

  std::optional<double> AmountPerSecond() const;

  Progress _newest;
  std::deque<Sample> _samples;
};

/// @return "12.3 MB": bytes in the decimal unit that suits.
std::string SizeText(double bytes);

/// @return "4 s", "2 min 05 s", "1 h 03 min".
std::string TimeText(double seconds);

/// @return a line with a bar, of at most so many columns, without a line end.
std::string BarOf(const Progress& progress, const Pace& pace, std::size_t columns);

/// @return the same for a program: docs/schema/progress.json.
Json::Value ObjectOf(const Progress& progress, const Pace& pace);
