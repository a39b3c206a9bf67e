#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace cloudsim {

/// One request and its reply as they are kept. Holds no secret: no token, no address's signature.
struct Exchange {
  std::string method;
  std::string path;
  std::string query;
  std::string type;
  int status = 0;  ///< answered
  bool authorised = false;
  Json::Value headers;                 ///< of the request, as far as they are described
  Json::Value body;                    ///< when it was JSON
  std::optional<std::string> rawBody;  ///< when it was not
  Json::Value replyHeaders;
  Json::Value reply;  ///< the service's own; null for a file, and when a fault replaced it
  std::string fault;  ///< the kind of the one that was played
};

/// @param query in, as it came. @return it with the values of signatures left out.
std::string WithoutSignature(const std::string& query);

/// @return a reply without its token and without the signatures of its addresses.
Json::Value WithoutSecrets(Json::Value reply);

/// What the service received, in order, the last 100,000 requests and 64 MiB at most. Any thread.
class Received {
 public:
  void Add(Exchange exchange);

  /// Forgets everything; numbers start from 1 again.
  void Clear();

  /// @param since in, only later ones; what Clear has forgotten does not come again.
  /// @param most in, so many of them at most.
  /// @return a JSON array, one element per line.
  std::string Text(std::uint64_t since, std::size_t most) const;

  /// @return the number of the last one, 0 before the first.
  std::uint64_t Last() const;

 private:
  mutable std::mutex _mutex;
  std::deque<std::string> _entries;  ///< each as JSON text
  std::size_t _bytes = 0;
  std::uint64_t _number = 0;
};

}  // namespace cloudsim
