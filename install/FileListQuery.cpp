#include <json/value.h>

#include "agent/AgentLog.h"
#include "agent/Query.h"
#include "agent/TolmarAgent.h"

unsigned long TolmarAgent::GetDownloadFiles(Json::Value& reply, std::wstring l1FruPn,
                                            std::wstring moduleFruPn) {
  const OperationLog operation(L"GetDownloadFiles");
  const Query query{L"TolmarAgent::GetDownloadFiles",
                    [&] { return RequestDownload(l1FruPn, moduleFruPn); },
                    [&](unsigned long& retCode, const VRXResponse& response) {
                      return ParseDownloadFilesResponseForRetry(reply, retCode, response);
                    },
                    nullptr, L"%s: retCode =  %ul"};
  const unsigned long retCode = RunRetryLoop(query, query.request());
  operation.Exit();
  return retCode;
}
