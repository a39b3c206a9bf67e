#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace cloudsim {

/// One request as it is kept. Holds no secret: no token, no address's signature.
struct Exchange {
  std::string method;
  std::string path;
  std::string query;
  std::string type;
  int status = 0;  ///< answered
  bool authorised = false;
  Json::Value body;                    ///< when it was JSON
  std::optional<std::string> rawBody;  ///< when it was not
};

/// @param query in, as it came. @return it with the values of signatures left out.
std::string WithoutSignature(const std::string& query);

/// What the service received, in order, the last 100,000 requests and 64 MiB at most. Any thread.
class Received {
 public:
  void Add(const Exchange& exchange);

  /// Forgets everything; numbers start from 1 again.
  void Clear();

  /// @return a JSON array, one element per line.
  std::string Text() const;

 private:
  mutable std::mutex _mutex;
  std::deque<std::string> _entries;  ///< each as JSON text
  std::size_t _bytes = 0;
  std::uint64_t _number = 0;
};

}  // namespace cloudsim
