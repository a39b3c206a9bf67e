#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace cloudsim {

/// The service's requests: the last word of a path, the body's "type" and a fault's "on" alike.
inline constexpr std::array<std::string_view, 5> ServiceRequests{
    "hasEntitlement", "entitlement", "downloadRequest", "downloadProgress", "installProgress"};

/// The other types, in the record and in faults.
inline constexpr std::string_view TokenType = "token";
inline constexpr std::string_view FileType = "file";
inline constexpr std::string_view FilePrefix = "file:";  ///< a fault's "on", the name follows
inline constexpr std::string_view UnknownType = "unknown";

inline bool IsServiceRequest(std::string_view type) {
  return std::find(ServiceRequests.begin(), ServiceRequests.end(), type) != ServiceRequests.end();
}

}  // namespace cloudsim
