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
#include "reference_host/log/Event.h"

namespace refhost {

namespace {

/// A token that is handed out has this long for its way to the cloud.
constexpr std::int64_t MarginSeconds = 60;

/// After a failure, so that the tries of many threads come together in one exchange.
constexpr std::uint64_t RestMilliseconds = 250;

constexpr unsigned long Stopped = ERROR_WINHTTP_OPERATION_CANCELLED;

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
    if (const std::shared_ptr<const Exchange> running = _running) {
      // One that was under way at a stop lets go of those too who come to it later.
      if (!WaitFor(lock, running->work, [&] { return running->done; })) return Stopped;
      if (running->sessionToken == sessionToken) return running->Outcome(jwt);
    } else if (!WaitFor(lock, work, [this] { return _running || Now() >= _restUntil; })) {
      return Stopped;
    } else if (!_running && !IsFresh(sessionToken)) {
      return Run(lock, tokenUrl, sessionToken)->Outcome(jwt);
    }
  }
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

std::shared_ptr<const TokenCache::Exchange> TokenCache::Run(std::unique_lock<std::mutex>& lock,
                                                            const std::string& tokenUrl,
                                                            const std::string& sessionToken) {
  const auto exchange = std::make_shared<Exchange>(Exchange{sessionToken});
  const std::uint64_t asked = Now();
  ReceivedToken token;
  _running = exchange;
  lock.unlock();
  exchange->failure = ExchangeSafely(tokenUrl, sessionToken, token);
  lock.lock();
  if (exchange->failure == 0) {
    const std::int64_t fresh = std::max<std::int64_t>(token.secondsLeft - MarginSeconds, 0);
    _freshUntil = fresh > 0 ? asked + 1000 * static_cast<std::uint64_t>(fresh) : 0;
    _sessionToken = sessionToken;
    _jwt = exchange->jwt = token.jwt;
  } else {
    _restUntil = Now() + RestMilliseconds;
    ZLT::g_log.e(L"Tessary: the session token was not exchanged, status or error %lu",
                 exchange->failure);
    Event("token.failed").With("status", exchange->failure).With("cause", "token.none").Write();
  }
  exchange->done = true;
  _running.reset();
  _changed.notify_all();
  return exchange;
}

unsigned long TokenCache::Exchange::Outcome(std::string& received) const {
  if (failure == 0) received = jwt;
  return failure;
}

}  // namespace refhost
