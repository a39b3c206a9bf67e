#include <json/value.h>

#include <exception>
#include <utility>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "catalogue/JsonText.h"

namespace {

/// The shape that the three parsers share: a failed exchange stops the loop, a body that cannot be
/// read is asked for again, anything else is up to `read`, which yields the reply's own code.
template <class Read>
bool ParseReply(const VRXResponse& response, unsigned long& retCode, const Read& read) {
  retCode = response.GetReturnCode();
  if (retCode != ResultCode::Success) return false;
  try {
    Json::Value root;
    if (!ParseJson(response.GetResponse(), root)) {
      retCode = ResultCode::BadDocument;
    } else {
      retCode = read(Taken(root, "result"));
    }
  } catch (const std::exception&) {
    retCode = ResultCode::BadDocument;
  }
  return retCode != ResultCode::Success;
}

}  // namespace

bool TolmarAgent::ParseHasEntitlementResponseForRetry(unsigned char& hasEntitlement,
                                                      unsigned long& retCode,
                                                      VRXResponse response) {
  const bool again = ParseReply(response, retCode, [&](const Json::Value& result) {
    hasEntitlement = Member(result, "hasEntitlement").asBool() ? 1 : 0;
    if (result.isMember("hasPreinstallSw")) {
      _hasPreinstallSw = Member(result, "hasPreinstallSw").asBool();
    }
    _entitlementKnown = true;
    SetRegistryEntitlementFlag(hasEntitlement);
    return HasSuccessCode(result) ? ResultCode::Success : ResultCode::HasEntitlementRefused;
  });
  if (response.GetReturnCode() == ResultCode::Success) {
    logger.d(L"%s: retCode = %ul", L"TolmarAgent::ParseHasEntitlementResponseForRetry",
             static_cast<unsigned int>(retCode));
  }
  return again;
}

bool TolmarAgent::ParseEntitledSoftwareResponseForRetry(Json::Value& result, unsigned long& retCode,
                                                        VRXResponse response) {
  return ParseReply(response, retCode, [&](Json::Value answer) {
    // As an integer, unlike the other two: a missing code counts as success here.
    const bool success = Member(answer, "code").asInt() == 0;
    result = std::move(answer);
    return success ? ResultCode::Success : ResultCode::EntitlementRefused;
  });
}

bool TolmarAgent::ParseDownloadFilesResponseForRetry(Json::Value& result, unsigned long& retCode,
                                                     VRXResponse response) {
  return ParseReply(response, retCode, [&](Json::Value answer) {
    result = std::move(answer);
    return HasSuccessCode(result) ? ResultCode::Success : ResultCode::DownloadRefused;
  });
}
