#include <json/value.h>

#include "agent/AgentLog.h"
#include "agent/Query.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"

unsigned long TolmarAgent::HasEntitledSoftware(unsigned char& hasEntitlement) {
  // The first request goes out before the registration is looked at; its answer is dropped then.
  VRXResponse first = RequestHasEntitlement();
  if (!IsRegistered()) return ResultCode::NotRegistered;
  const Query query{L"TolmarAgent::HasEntitledSoftware", [this] { return RequestHasEntitlement(); },
                    [&](unsigned long& retCode, const VRXResponse& response) {
                      return ParseHasEntitlementResponseForRetry(hasEntitlement, retCode, response);
                    },
                    L"%s: breaking from While with nRetry = %ul"};
  return RunRetryLoop(query, std::move(first));
}

unsigned long TolmarAgent::GetEntitledSoftware(Json::Value& reply) {
  const OperationLog operation(L"GetEntitledSoftware");
  const Query query{L"TolmarAgent::GetEntitledSoftware", [this] { return RequestEntitlement(); },
                    [&](unsigned long& retCode, const VRXResponse& response) {
                      return ParseEntitledSoftwareResponseForRetry(reply, retCode, response);
                    }};
  const unsigned long retCode = RunRetryLoop(query, query.request());
  operation.Exit();
  return retCode;
}
