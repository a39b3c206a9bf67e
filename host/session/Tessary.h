#pragma once

#include <string>

#include "host/Export.h"

/// The token broker: knows whether the device is registered, holds its session token and exchanges
/// it for JSON Web Tokens. Any thread.
class ZLT_API Tessary {
 public:
  /// @return the one broker, or null where the suite runs without one.
  static Tessary* GetInstance();

  /// @return non-zero when the device is registered.
  int IsRegistered();

  /// @param caller in, name of the asking component, for the suite's own records.
  /// @return the current session token, empty when there is none.
  std::wstring GetCurrentToken(const std::wstring& caller);

  /// Exchanges a session token for a JSON Web Token; may ask the cloud, so it may block.
  /// @param sessionToken in, UTF-8. @param jwt out, UTF-8; left as it was on failure.
  /// @return 0 on success, else an HTTP status or a transport error number.
  unsigned long GetJwtFromServer(std::string sessionToken, std::string& jwt);

 private:
  Tessary() = default;
};
