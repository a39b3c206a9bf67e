#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "reference_host/http/HttpExchange.h"

namespace refhost {

/// What became of a POST.
struct HttpReply {
  unsigned long error = 0;                   ///< WinHTTP's number when no whole reply arrived
  unsigned long status = 0;                  ///< the reply's HTTP status
  std::string body{};                        ///< empty when the reply is not whole
  std::optional<std::int64_t> serverTime{};  ///< as `HttpExchange::ServerTime`
};

/// Sends a POST and receives the whole reply, within what the configuration allows; a failure is
/// logged. Blocks; any thread.
HttpReply Post(HttpCall call);

}  // namespace refhost
