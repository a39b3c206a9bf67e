#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace refhost {

/// @return true when `jwt` has the form of a JSON Web Token (three parts of base64url, the last may
/// be empty) and so may stand in a header.
bool IsJwt(const std::string& jwt);

/// Reads when a JSON Web Token expires. Its signature is the cloud's business and is not checked.
/// @return seconds since 1970-01-01 00:00 UTC; nothing when the token does not tell.
std::optional<std::int64_t> JwtExpiry(const std::string& jwt);

/// @return the token in a reply of the token exchange, empty when it holds none that may stand in a
/// header.
std::string JwtOfReply(const std::string& reply);

}  // namespace refhost
