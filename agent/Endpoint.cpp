#include <mutex>

#include "agent/TolmarAgent.h"
#include "host/common/EpUrlProvider.h"

namespace {

constexpr const wchar_t* ServicePath = L"/mp/zlt/v2";

// The notification bus changes the endpoint while requests read it. Not one of the agent's two
// locks: it is held for one copy and is never held when another lock is taken.
std::mutex& EndpointMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

std::wstring TolmarAgent::_serverUrl;
std::wstring TolmarAgent::_realm;

void TolmarAgent::SetBaseUri(const std::wstring& base) {
  std::wstring url = base + ServicePath;
  const std::scoped_lock lock(EndpointMutex());
  _serverUrl.swap(url);
}

void TolmarAgent::SetRealm(const std::wstring& realm) {
  std::wstring copy = realm;
  const std::scoped_lock lock(EndpointMutex());
  _realm.swap(copy);
}

std::wstring TolmarAgent::CurrentServerUrl() {
  const std::scoped_lock lock(EndpointMutex());
  return _serverUrl;
}

std::wstring TolmarAgent::CurrentRealm() {
  const std::scoped_lock lock(EndpointMutex());
  return _realm;
}

bool TolmarAgent::AdoptEndpoint() {
  const std::wstring savedUrl = CurrentServerUrl();
  std::wstring base = savedUrl;
  EpUrlProvider::GetInstance()->GetBaseUrl(base);
  SetBaseUri(base);
  const bool realmChanged = AdoptRealm();
  return realmChanged || CurrentServerUrl() != savedUrl;
}

bool TolmarAgent::AdoptRealm() {
  const std::wstring savedRealm = CurrentRealm();
  std::wstring realm = savedRealm;
  EpUrlProvider::GetInstance()->GetRealm(realm);
  SetRealm(realm);
  return realm != savedRealm;
}

bool TolmarAgent::AdoptEndpointIfUnasked() {
  std::wstring base;
  EpUrlProvider::GetInstance()->GetBaseUrl(base);
  const bool urlChanged = base + ServicePath != CurrentServerUrl();
  const bool realmChanged = AdoptRealm();
  if (!urlChanged && !realmChanged && _entitlementKnown) return false;
  SetBaseUri(base);
  return true;
}
