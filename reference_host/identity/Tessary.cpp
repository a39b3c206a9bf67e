#include "host/session/Tessary.h"

#include <windows.h>

#include <ctime>
#include <mutex>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/identity/JwtExpiry.h"
#include "reference_host/identity/TokenExchange.h"

namespace {

/// A token that is handed out has this long for its way to the cloud.
constexpr std::int64_t MarginSeconds = 60;

/// The newest JSON Web Token and what it was given for.
class TokenCache {
 public:
  /// Several threads ask at the same time: the first exchanges, the others get what it got.
  unsigned long Get(const std::string& tokenUrl, const std::string& sessionToken,
                    std::string& jwt) {
    const std::scoped_lock lock(_mutex);
    if (!IsFresh(sessionToken)) {
      if (const unsigned long failure = Renew(tokenUrl, sessionToken)) return failure;
    }
    jwt = _jwt;
    return 0;
  }

 private:
  bool IsFresh(const std::string& sessionToken) const {
    return sessionToken == _sessionToken && std::time(nullptr) < _expiry - MarginSeconds;
  }

  unsigned long Renew(const std::string& tokenUrl, const std::string& sessionToken) {
    const unsigned long failure = refhost::ExchangeToken(tokenUrl, sessionToken, _jwt);
    if (failure != 0) {
      ZLT::g_log.e(L"Tessary: the session token was not exchanged, status or error %lu", failure);
      return failure;
    }
    _sessionToken = sessionToken;
    _expiry = refhost::JwtExpiry(_jwt).value_or(0);
    return 0;
  }

  std::mutex _mutex;
  std::string _sessionToken;
  std::string _jwt;
  std::int64_t _expiry = 0;
};

}  // namespace

Tessary* Tessary::GetInstance() {
  static Tessary broker;
  return &broker;
}

int Tessary::IsRegistered() {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  return configuration != nullptr && configuration->registered ? 1 : 0;
}

std::wstring Tessary::GetCurrentToken(const std::wstring& caller) {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return {};
  ZLT::g_log.d(L"Tessary: session token handed to %s", caller.c_str());
  return ZLT::String::UTF8ToUTF16(configuration->sessionToken);
}

unsigned long Tessary::GetJwtFromServer(std::string sessionToken, std::string& jwt) {
  static TokenCache cache;
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return ERROR_NOT_FOUND;
  return cache.Get(configuration->tokenUrl, sessionToken, jwt);
}
