#include <stdexcept>
#include <utility>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "host/common/HttpRequest.h"
#include "host/common/Text.h"
#include "service/RequestBody.h"
#include "service/RequestKind.h"

namespace {

constexpr std::size_t BodyCapacity = 2048;  ///< wide characters, terminator included
constexpr std::size_t UrlCapacity = 1024;

/// @throws std::length_error when `text` does not fit: truncated text is never sent.
void RequireFits(const std::wstring& text, std::size_t capacity) {
  if (text.size() >= capacity) throw std::length_error("request text does not fit its buffer");
}

bool IsAnswered(bool posted, const ZLT::HttpRequest& request) {
  const unsigned long status = request.getStatusCode();
  return posted && (status == 200 || status == 201) && request.getStreamLength() != 0;
}

}  // namespace

VRXResponse TolmarAgent::SendRequest(const RequestKind& kind,
                                     const std::function<void(RequestBody&)>& fill) {
  VRXResponse response;
  try {
    RequestBody body(kind.type);
    fill(body);
    response.SetReturnCode(Exchange(kind, body.Close(), response));
  } catch (...) {
    response = VRXResponse();
    response.SetReturnCode(ResultCode::RequestException);
  }
  return response;
}

unsigned long TolmarAgent::Exchange(const RequestKind& kind, const std::wstring& body,
                                    VRXResponse& response) {
  RequireFits(body, BodyCapacity);
  if (kind.isReport) logger.d(L"TolmarAgent: %s payload:\n%s", kind.operation, body.c_str());
  const std::wstring url = CurrentServerUrl() + L"/" + kind.type + L"?deviceId=" + _deviceId;
  RequireFits(url, UrlCapacity);
  const std::wstring token = GetJwtFromServer();
  if (token.empty()) {
    logger.d(L"TolmarAgent: %s failed due to empty token", kind.operation);
    return kind.noTokenCode;
  }
  ZLT::HttpRequest request(url.c_str(), L"", nullptr, ZLT::HttpTimeouts::DEFAULT);
  const std::string bytes = ZLT::String::UTF16ToUTF8(body);
  const bool posted = request.doPost(bytes.data(), static_cast<unsigned long>(bytes.size()),
                                     HeaderBlock(token).c_str());
  if (!IsAnswered(posted, request)) {
    return kind.isReport ? kind.noTokenCode : request.getStatusCode();
  }
  const std::wstring reply = ZLT::String::UTF8ToUTF16(request.getStream().str());
  logger.d(L"TolmarAgent: %s response:\n%s", kind.operation, reply.c_str());
  response.SetResponse(reply);
  logger.d(L"TolmarAgent: %s succeeded", kind.operation);
  return ResultCode::Success;
}
