#pragma once

#include <cstdint>

/// The agent's result codes. HTTP status codes and transport error numbers (WinHTTP's) pass through
/// beside them.
namespace ResultCode {

inline constexpr unsigned long Success = 0;            ///< done
inline constexpr unsigned long RequestException = 11;  ///< a request could not be built or sent
inline constexpr unsigned long NoTokenHasEntitlement = 29;  ///< no token for this request
inline constexpr unsigned long NoTokenEntitlement = 30;  ///< no token for the entitlement request
inline constexpr unsigned long NoTokenDownload = 31;     ///< no token for the download request
inline constexpr unsigned long DownloadProgressFailed = 32;   ///< download report: not taken
inline constexpr unsigned long InstallProgressFailed = 33;    ///< install report: not taken
inline constexpr unsigned long HasEntitlementRefused = 34;    ///< the reply's result.code is not 0
inline constexpr unsigned long EntitlementRefused = 35;       ///< the same
inline constexpr unsigned long DownloadRefused = 36;          ///< the same
inline constexpr unsigned long DownloadProgressRefused = 37;  ///< the same
inline constexpr unsigned long InstallProgressRefused = 38;   ///< the same
inline constexpr unsigned long BadDocument = 39;      ///< not JSON, or JSON of the wrong shape
inline constexpr unsigned long NotRegistered = 62;    ///< no token broker, or unknown to it
inline constexpr unsigned long Nothing = 0xFFFFFFFF;  ///< nothing done yet; no such title; no log

}  // namespace ResultCode
