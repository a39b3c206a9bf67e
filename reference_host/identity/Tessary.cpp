#include "host/session/Tessary.h"

#include <windows.h>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/http/HttpExchange.h"
#include "reference_host/identity/TokenCache.h"

namespace {

/// Never destroyed: requests may be refused to the last moment of the process.
refhost::TokenCache& Cache() {
  static auto* const cache = [] {
    auto* const made = new refhost::TokenCache;
    refhost::ObserveRefusals([](const std::wstring& headers) { Cache().Drop(headers); });
    return made;
  }();
  return *cache;
}

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
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return ERROR_NOT_FOUND;
  return Cache().Get(configuration->tokenUrl, sessionToken, jwt);
}
