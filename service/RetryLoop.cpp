#include "agent/Query.h"

#include <algorithm>
#include <array>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "host/common/ApiUtility.h"

namespace {

constexpr int MaxRetries = 3;

struct RetryWindow {
  int minSeconds;
  int maxSeconds;
};

constexpr RetryWindow AfterFailure{60, 1800};
constexpr RetryWindow AfterAnswer{2,
                                  900};  ///< the service answered, but with a failure or nonsense

}  // namespace

bool TolmarAgent::shouldRetry(const unsigned long& code) {
  // 12007 name not resolved and 12029 cannot connect are WinHTTP's numbers.
  static const std::array<unsigned long, 5> transientCodes{500, 503, 504, 12007, 12029};
  logger.d(L"%s: responseCode = %ul", L"TolmarAgent::shouldRetry", static_cast<unsigned int>(code));
  return std::find(transientCodes.begin(), transientCodes.end(), code) != transientCodes.end();
}

unsigned long TolmarAgent::RunRetryLoop(const Query& query, VRXResponse response) {
  unsigned long retCode = ResultCode::Nothing;
  int retries = 0;
  while (retries < MaxRetries) {
    if (!shouldRetry(response.GetReturnCode()) && !query.parse(retCode, response)) {
      if (query.breakFormat != nullptr) logger.d(query.breakFormat, query.name, retries);
      break;
    }
    if (!WaitBeforeRetry(query, response.GetReturnCode(), retCode, retries)) break;
    response = query.request();
  }
  // Once more for every outcome: after a stop or the last retry nobody has read the newest reply
  // yet.
  query.parse(retCode, response);
  logger.d(query.resultFormat, query.name, static_cast<unsigned int>(retCode));
  return retCode;
}

bool TolmarAgent::WaitBeforeRetry(const Query& query, unsigned long answered,
                                  unsigned long lastCode, int& retries) {
  logger.d(L"%s: Retrying", query.name);
  const RetryWindow window = answered == ResultCode::Success ? AfterAnswer : AfterFailure;
  logger.d(L"%s: retryMinSeconds = %d, retryMaxSeconds = %d, retCode = %ul", query.name,
           window.minSeconds, window.maxSeconds, static_cast<unsigned int>(lastCode));
  const unsigned int wait =
      ZLT::ApiUtility::GetSleepDurationInMillis(retries, window.minSeconds, window.maxSeconds);
  if (WaitForSingleObject(_hStopEvent, wait) == WAIT_OBJECT_0) {
    logger.d(L"%s: _hStopEvent Signaled", query.name);
    return false;
  }
  ++retries;
  logger.d(L"%s: Retrying times %d", query.name, retries);
  return true;
}
