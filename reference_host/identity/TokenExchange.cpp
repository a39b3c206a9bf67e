#include "reference_host/identity/TokenExchange.h"

#include <json/value.h>
#include <json/writer.h>

#include "host/common/DateTime.h"
#include "host/common/Text.h"
#include "reference_host/http/HttpPost.h"
#include "reference_host/identity/JwtExpiry.h"

namespace refhost {

namespace {

std::string RequestBody(const std::string& sessionToken) {
  Json::Value body;
  body["sessionToken"] = sessionToken;
  return Json::writeString(Json::StreamWriterBuilder(), body);
}

}  // namespace

unsigned long ExchangeToken(const std::string& tokenUrl, const std::string& sessionToken,
                            ReceivedToken& token) {
  const std::string body = RequestBody(sessionToken);
  const std::int64_t asked = DateTimeUtility::GetCurrentDatetime();
  const HttpReply reply = Post({.url = ZLT::String::UTF8ToUTF16(tokenUrl),
                                .headers = L"Content-Type: application/json",
                                .body = body});
  if (reply.error != 0) return reply.error;
  if (reply.status != HTTP_STATUS_OK) return reply.status;
  const std::string received = JwtOfReply(reply.body);
  if (received.empty()) return ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
  const std::optional<JwtTimes> times = TimesOf(received);
  token = {received, times ? SecondsLeft(*times, reply.serverTime, asked) : 0};
  return 0;
}

}  // namespace refhost
