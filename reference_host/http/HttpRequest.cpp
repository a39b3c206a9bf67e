#include "host/common/HttpRequest.h"

#include <algorithm>

#include "host/common/Log.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/http/HttpExchange.h"
#include "reference_host/http/HttpFile.h"
#include "reference_host/http/SystemError.h"

namespace ZLT {

namespace {

/// Replies are small JSON documents; a longer one is no reply of the service.
constexpr std::uint64_t MaxReplyBytes = 16 << 20;

std::wstring TextOf(const wchar_t* text) { return text != nullptr ? text : L""; }

/// The reply as a whole has as long as the exchange's time-outs together: a server that sends one
/// byte now and then must not hold the caller for ever.
refhost::HttpLimits LimitsOf(const HttpTimeouts& timeouts) {
  const auto total =
      std::int64_t{timeouts.resolve} + timeouts.connect + timeouts.send + timeouts.receive;
  return {MaxReplyBytes, std::chrono::milliseconds(total)};
}

/// What the configuration allows, when the caller allows more.
HttpTimeouts Limited(const HttpTimeouts& asked) {
  const int most = 1000 * static_cast<int>(refhost::Settings().requestTimeoutSeconds);
  return {std::min(asked.resolve, most), std::min(asked.connect, most), std::min(asked.send, most),
          std::min(asked.receive, most)};
}

}  // namespace

const HttpTimeouts HttpTimeouts::DEFAULT{15000, 15000, 30000, 30000};

struct HttpRequest::State {
  refhost::HttpCall call;
  unsigned long status = 0;
  std::string body;
  std::stringstream stream;

  unsigned long Exchange() {
    refhost::HttpExchange exchange;
    if (const unsigned long error = exchange.Send(call)) return error;
    status = exchange.Status();
    return exchange.ReadBody(LimitsOf(call.timeouts), [this](const char* bytes, std::size_t count) {
      body.append(bytes, count);
      return 0UL;
    });
  }
};

HttpRequest::HttpRequest(const wchar_t* url, const wchar_t* userAgent, const wchar_t* proxy,
                         HttpTimeouts timeouts)
    : m_pState(new State) {
  m_pState->call.verb = L"POST";
  m_pState->call.url = TextOf(url);
  m_pState->call.userAgent = TextOf(userAgent);
  m_pState->call.proxy = TextOf(proxy);
  m_pState->call.timeouts = Limited(timeouts);
}

HttpRequest::~HttpRequest() { delete m_pState; }

bool HttpRequest::doPost(const char* body, unsigned long length, const wchar_t* headers) {
  State& state = *m_pState;
  state.call.body = {body, length};
  state.call.headers = TextOf(headers);
  state.body.clear();
  const unsigned long error = state.Exchange();
  if (error != 0) {
    // No part of a reply that is not whole is handed on.
    state.body.clear();
    state.status = error;
    g_log.e(L"HttpRequest: POST %s failed: %s", refhost::WithoutQuery(state.call.url).c_str(),
            refhost::DescriptionOf(HRESULT_FROM_WIN32(error)).c_str());
  }
  state.stream.str(state.body);
  state.stream.clear();
  return error == 0;
}

unsigned long HttpRequest::getStatusCode() const { return m_pState->status; }

unsigned long HttpRequest::getStreamLength() const {
  return static_cast<unsigned long>(m_pState->body.size());
}

std::stringstream& HttpRequest::getStream() { return m_pState->stream; }

bool HttpRequest::DownloadFile(const std::wstring& url, const std::wstring& localPath,
                               const std::wstring& headers) {
  const std::wstring cause = refhost::FetchFile(url, localPath, headers);
  if (!cause.empty()) {
    g_log.e(L"HttpRequest: %s from %s, attempt 1: %s", localPath.c_str(),
            refhost::WithoutQuery(url).c_str(), cause.c_str());
  }
  return cause.empty();
}

}  // namespace ZLT
