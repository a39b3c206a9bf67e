#pragma once

#include <json/value.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace cloudsim {

/// What a device asks, in the order in which figures are shown.
enum class Kind {
  Token,
  HasEntitlement,
  Entitlement,
  DownloadRequest,
  DownloadProgress,
  InstallProgress,
  AskForFile,
  File
};
inline constexpr std::array<const char*, 8> KindNames{
    "token",           "hasEntitlement", "entitlement", "downloadRequest", "downloadProgress",
    "installProgress", "HEAD file",      "GET file"};

/// How one request ended.
struct Sample {
  Kind kind;
  std::chrono::steady_clock::time_point begin;
  std::chrono::steady_clock::time_point end;
  std::string error;        ///< empty: as it should be
  std::uint64_t bytes = 0;  ///< of the reply's body
};

/// What many requests came to. Any thread.
class Figures {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param start in, from which seconds count.
  explicit Figures(Clock::time_point start) : _start(start) {}

  void Add(const Sample& sample);

  /// A device got its turn so long after its time.
  void AddDelay(Clock::duration delay);

  /// @return requests, errors and quantiles by kind, and the sums. @param seconds in, that it took.
  Json::Value ToJson(double seconds) const;

 private:
  struct Row {
    std::vector<float> milliseconds;
    std::uint64_t errors = 0;
  };

  mutable std::mutex _mutex;
  Clock::time_point _start;
  std::array<Row, KindNames.size()> _rows;
  std::vector<float> _delays;  ///< milliseconds
  std::vector<std::uint64_t> _perSecond;
  std::map<std::string, std::uint64_t> _errors;
  std::uint64_t _bytes = 0;
};

}  // namespace cloudsim
