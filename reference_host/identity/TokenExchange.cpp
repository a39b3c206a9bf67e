#include "reference_host/identity/TokenExchange.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <json/value.h>
#include <json/writer.h>
#include <winhttp.h>

#include "host/common/HttpRequest.h"
#include "host/common/Text.h"
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
                            std::string& jwt) {
  ZLT::HttpRequest request(ZLT::String::UTF8ToUTF16(tokenUrl).c_str(), L"", nullptr,
                           ZLT::HttpTimeouts::DEFAULT);
  const std::string body = RequestBody(sessionToken);
  const bool answered = request.doPost(body.data(), static_cast<unsigned long>(body.size()),
                                       L"Content-Type: application/json");
  if (!answered || request.getStatusCode() != HTTP_STATUS_OK) return request.getStatusCode();
  const std::string received = JwtOfReply(request.getStream().str());
  if (received.empty()) return ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
  jwt = received;
  return 0;
}

}  // namespace refhost
