#pragma once

#include <string>

#include "host/Export.h"

/// Where the cloud service is found. Any thread; nothing throws.
class ZLT_API EpUrlProvider {
 public:
  /// @return the one provider, never null.
  static EpUrlProvider* GetInstance();

  /// @param url out, the base URL (scheme, host, port); left as it was on failure.
  /// @return true when known.
  bool GetBaseUrl(std::wstring& url);

  /// @param realm out, the realm; left as it was on failure.
  /// @return true when known.
  bool GetRealm(std::wstring& realm);

 private:
  EpUrlProvider() = default;
};
