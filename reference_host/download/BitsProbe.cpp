#include "reference_host/download/BitsProbe.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/download/BitsLimits.h"
#include "reference_host/http/HttpExchange.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

constexpr unsigned long FirstTransportError = 12000;
constexpr unsigned long RangeNotSatisfiable = 416;

bool IsHttpError(unsigned long status) { return status >= 400 && status < FirstTransportError; }

/// The body, if there is one, is not received.
ServerAnswer AskWith(const wchar_t* verb, const std::wstring& url, const std::wstring& headers) {
  HttpExchange exchange;
  ZLT::HttpTimeouts timeouts = ZLT::HttpTimeouts::DEFAULT;
  const auto stallMs = static_cast<int>(1000 * Settings().downloadStallSeconds);
  timeouts.receive = std::min(timeouts.receive, stallMs);
  const unsigned long error =
      exchange.Send({.verb = verb, .url = url, .headers = headers, .timeouts = timeouts});
  if (error != 0) return {error, std::nullopt};
  switch (exchange.Status()) {
    case HTTP_STATUS_OK:
      return {HTTP_STATUS_OK, exchange.AnnouncedLength()};
    case HTTP_STATUS_PARTIAL_CONTENT:
      return {HTTP_STATUS_OK, exchange.WholeLength()};
    case RangeNotSatisfiable:
      // A file without a byte has no first one.
      if (exchange.WholeLength() == 0u) return {HTTP_STATUS_OK, 0};
      [[fallthrough]];
    default:
      return {exchange.Status(), std::nullopt};
  }
}

/// Signed addresses may be good for fetching only: a server that refuses to be asked is asked for
/// the file itself, but for one byte of it.
ServerAnswer Ask(const std::wstring& url, const std::wstring& headers) {
  const ServerAnswer answer = AskWith(L"HEAD", url, headers);
  if (!IsHttpError(answer.status)) return answer;
  return AskWith(L"GET", url, HeadersForBits(headers) + L"Range: bytes=0-0");
}

}  // namespace

std::optional<BitsFailure> ServerAnswer::Refusal() const {
  if (status < 300 || status >= FirstTransportError) return std::nullopt;
  return FailureWith(BG_ERROR_CONTEXT_REMOTE_FILE, HttpCode(status));
}

std::optional<BitsFailure> ServerAnswer::TransportFailure() const {
  if (status < FirstTransportError) return std::nullopt;
  return FailureWith(BG_ERROR_CONTEXT_GENERAL_TRANSPORT, HRESULT_FROM_WIN32(status));
}

struct BitsProbe::State {
  std::vector<std::wstring> urls;
  std::wstring headers;
  std::atomic<bool> abandoned = false;
  std::atomic<bool> done = false;
  std::mutex mutex;
  std::map<std::wstring, ServerAnswer> answers;

  /// Nothing may leave the thread; what is not known stays so.
  void AskAll() noexcept try {
    for (const std::wstring& url : urls) {
      if (abandoned) break;
      const ServerAnswer answer = Ask(url, headers);
      const std::lock_guard lock(mutex);
      answers[url] = answer;
      // A server that is not reached would cost the time-outs again for every file.
      if (answer.TransportFailure()) break;
    }
    done = true;
  } catch (...) {
    done = true;
  }
};

BitsProbe::BitsProbe(std::vector<std::wstring> urls, std::wstring headers)
    : _state(std::make_shared<State>()) {
  _state->urls = std::move(urls);
  _state->headers = std::move(headers);
  try {
    // Detached: a cancelled download must not wait for a server that does not answer.
    std::thread([state = _state] { state->AskAll(); }).detach();
  } catch (const std::system_error&) {
    _state->done = true;
  }
}

BitsProbe::~BitsProbe() { _state->abandoned = true; }

bool BitsProbe::IsDone() const { return _state->done; }

ServerAnswer BitsProbe::AnswerFor(const std::wstring& url) const {
  const std::lock_guard lock(_state->mutex);
  const auto found = _state->answers.find(url);
  return found == _state->answers.end() ? ServerAnswer{} : found->second;
}

}  // namespace refhost
