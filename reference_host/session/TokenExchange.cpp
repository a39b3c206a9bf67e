#include "reference_host/session/TokenExchange.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>
#include <winhttp.h>

#include <memory>

#include "host/common/HttpRequest.h"
#include "host/common/Text.h"
#include "reference_host/session/JwtExpiry.h"

namespace refhost {

namespace {

std::string RequestBody(const std::string& sessionToken) {
  Json::Value body;
  body["sessionToken"] = sessionToken;
  return Json::writeString(Json::StreamWriterBuilder(), body);
}

/// @return the reply's token, empty when it holds none that may stand in a header.
std::string ReadJwt(const std::string& reply) try {
  Json::Value root;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  if (!reader->parse(reply.data(), reply.data() + reply.size(), &root, nullptr)) return {};
  const std::string jwt = root["jwt"].asString();
  return IsJwt(jwt) ? jwt : std::string();
} catch (const Json::Exception&) {
  return {};  // another shape than asked for
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
  const std::string received = ReadJwt(request.getStream().str());
  if (received.empty()) return ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
  jwt = received;
  return 0;
}

}  // namespace refhost
