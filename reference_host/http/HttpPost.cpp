#include "reference_host/http/HttpPost.h"

#include <algorithm>

#include "host/common/Log.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

/// Replies are small JSON documents; a longer one is no reply of the service.
constexpr std::uint64_t MaxReplyBytes = 16 << 20;

/// The reply as a whole has as long as the exchange's time-outs together: a server that sends one
/// byte now and then must not hold the caller for ever.
HttpLimits LimitsOf(const ZLT::HttpTimeouts& timeouts) {
  const auto total =
      std::int64_t{timeouts.resolve} + timeouts.connect + timeouts.send + timeouts.receive;
  return {MaxReplyBytes, std::chrono::milliseconds(total)};
}

/// What the configuration allows, when the caller allows more.
ZLT::HttpTimeouts Limited(const ZLT::HttpTimeouts& asked) {
  const int most = 1000 * static_cast<int>(Settings().requestTimeoutSeconds);
  return {std::min(asked.resolve, most), std::min(asked.connect, most), std::min(asked.send, most),
          std::min(asked.receive, most)};
}

unsigned long Exchange(const HttpCall& call, HttpReply& reply) {
  HttpExchange exchange;
  if (const unsigned long error = exchange.Send(call)) return error;
  reply.status = exchange.Status();
  reply.serverTime = exchange.ServerTime();
  return exchange.ReadBody(LimitsOf(call.timeouts), [&](const char* bytes, std::size_t count) {
    reply.body.append(bytes, count);
    return 0UL;
  });
}

}  // namespace

HttpReply Post(HttpCall call) {
  call.verb = L"POST";
  call.timeouts = Limited(call.timeouts);
  HttpReply reply;
  reply.error = Exchange(call, reply);
  if (reply.error != 0) {
    // No part of a reply that is not whole is handed on.
    reply.body.clear();
    ZLT::g_log.e(L"HttpRequest: POST %s failed: %s", WithoutQuery(call.url).c_str(),
                 DescriptionOf(HRESULT_FROM_WIN32(reply.error)).c_str());
  }
  return reply;
}

}  // namespace refhost
