#include "reference_host/identity/TokenCache.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <winhttp.h>

#include <algorithm>
#include <chrono>
#include <exception>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/identity/TokenExchange.h"

namespace refhost {

namespace {

/// A token that is handed out has this long for its way to the cloud.
constexpr std::int64_t MarginSeconds = 60;

/// After a failure, so that the tries of many threads come together in one exchange.
constexpr std::uint64_t RestMilliseconds = 250;

/// How often a waiting thread looks for a stop.
constexpr std::chrono::milliseconds StopLook(50);

/// A token grows older while the machine sleeps, and whatever its clock is set to: this counts from
/// the system's start on, sleep included.
std::uint64_t Now() { return GetTickCount64(); }

unsigned long ExchangeSafely(const std::string& tokenUrl, const std::string& sessionToken,
                             ReceivedToken& token) try {
  return ExchangeToken(tokenUrl, sessionToken, token);
} catch (const std::exception&) {
  return ERROR_WINHTTP_INTERNAL_ERROR;  // out of memory: nobody may wait for this exchange for ever
}

}  // namespace

unsigned long TokenCache::Get(const std::string& tokenUrl, const std::string& sessionToken,
                              std::string& jwt) {
  const RunningWork work;
  std::unique_lock lock(_mutex);
  while (!IsFresh(sessionToken)) {
    std::shared_ptr<Exchange> exchange = _running;
    if (exchange == nullptr) {
      if (!WaitFor(lock, work, [this] { return _running || Now() >= _restUntil; })) break;
      if (_running || IsFresh(sessionToken)) continue;
      _running = exchange = std::make_shared<Exchange>(Exchange{sessionToken});
      Run(lock, tokenUrl, *exchange);
    } else if (!WaitFor(lock, exchange->work, [&] { return exchange->done; })) {
      break;
    }
    if (exchange->sessionToken != sessionToken) continue;  // somebody else's
    if (exchange->failure == 0) jwt = exchange->jwt;
    return exchange->failure;
  }
  if (!IsFresh(sessionToken)) return ERROR_WINHTTP_OPERATION_CANCELLED;
  jwt = _jwt;
  return 0;
}

void TokenCache::Drop(const std::wstring& headers) {
  const std::scoped_lock lock(_mutex);
  if (_jwt.empty()) return;
  if (headers.find(ZLT::String::UTF8ToUTF16(_jwt)) != std::wstring::npos) _freshUntil = 0;
}

bool TokenCache::IsFresh(const std::string& sessionToken) const {
  return sessionToken == _sessionToken && Now() < _freshUntil;
}

/// @return false when the suite was told to stop before.
template <typename Condition>
bool TokenCache::WaitFor(std::unique_lock<std::mutex>& lock, const RunningWork& work,
                         Condition isMet) {
  while (!isMet()) {
    if (work.IsToStop()) return false;
    _changed.wait_for(lock, StopLook);
  }
  return true;
}

void TokenCache::Run(std::unique_lock<std::mutex>& lock, const std::string& tokenUrl,
                     Exchange& exchange) {
  const std::uint64_t asked = Now();
  ReceivedToken token;
  lock.unlock();
  exchange.failure = ExchangeSafely(tokenUrl, exchange.sessionToken, token);
  lock.lock();
  if (exchange.failure == 0) {
    const std::int64_t fresh = std::max<std::int64_t>(token.secondsLeft - MarginSeconds, 0);
    _freshUntil = fresh > 0 ? asked + 1000 * static_cast<std::uint64_t>(fresh) : 0;
    _sessionToken = exchange.sessionToken;
    _jwt = exchange.jwt = token.jwt;
  } else {
    _restUntil = Now() + RestMilliseconds;
    ZLT::g_log.e(L"Tessary: the session token was not exchanged, status or error %lu",
                 exchange.failure);
  }
  exchange.done = true;
  _running.reset();
  _changed.notify_all();
}

}  // namespace refhost
