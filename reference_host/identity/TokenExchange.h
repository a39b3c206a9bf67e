#pragma once

#include <cstdint>
#include <string>

namespace refhost {

/// A JSON Web Token and for how many seconds it holds from when it was asked for; 0 when it does
/// not tell.
struct ReceivedToken {
  std::string jwt;
  std::int64_t secondsLeft = 0;
};

/// Asks the cloud for a JSON Web Token; blocks for one HTTPS exchange.
/// @param tokenUrl in, UTF-8. @param sessionToken in, UTF-8. @param token out; untouched on
/// failure.
/// @return 0, or the HTTP status, or the transport's error number (12152 for a reply that holds no
/// token).
unsigned long ExchangeToken(const std::string& tokenUrl, const std::string& sessionToken,
                            ReceivedToken& token);

}  // namespace refhost
