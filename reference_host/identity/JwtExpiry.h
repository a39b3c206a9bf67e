#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace refhost {

/// @return true when `jwt` has the form of a JSON Web Token (three parts of base64url, the last may
/// be empty) and so may stand in a header.
bool IsJwt(const std::string& jwt);

/// When a token ends and, if it tells, when it was issued: seconds since 1970-01-01 00:00 UTC by
/// the cloud's clock.
struct JwtTimes {
  std::int64_t expiry;
  std::optional<std::int64_t> issued;
};

/// Reads the times of a JSON Web Token. Its signature is the cloud's business and is not checked.
/// @return nothing when the token does not tell when it expires.
std::optional<JwtTimes> TimesOf(const std::string& jwt);

/// @param serverTime in, when the token came by the cloud's clock, where that is known.
/// @param ownTime in, the same by this device's clock, which may be hours wrong: it counts only
/// when nothing tells the cloud's.
/// @return for how many seconds the token still holds, from its coming on.
std::int64_t SecondsLeft(const JwtTimes& times, std::optional<std::int64_t> serverTime,
                         std::int64_t ownTime);

/// @return the token in a reply of the token exchange, empty when it holds none that may stand in a
/// header.
std::string JwtOfReply(const std::string& reply);

}  // namespace refhost
