#pragma once

#include <string>

namespace refhost {

/// Asks the cloud for a JSON Web Token; blocks for one HTTPS exchange.
/// @param tokenUrl in, UTF-8. @param sessionToken in, UTF-8. @param jwt out; untouched on failure.
/// @return 0, or the HTTP status, or the transport's error number (12152 for a reply that holds no
/// token).
unsigned long ExchangeToken(const std::string& tokenUrl, const std::string& sessionToken,
                            std::string& jwt);

}  // namespace refhost
