#include "agent/AgentLog.h"
#include "agent/TolmarAgent.h"
#include "host/common/Text.h"
#include "host/session/Tessary.h"

namespace {

constexpr int TokenAttempts = 3;

/// @return true when `jwt` holds a token.
bool TryToObtain(int count, std::string& jwt) {
  Tessary* broker = Tessary::GetInstance();
  const std::wstring session = broker ? broker->GetCurrentToken(L"TolmarAgent") : std::wstring();
  if (broker == nullptr || session.empty()) {
    logger.e(L"KIV.GetJwtFromServer: Current Token is empty. count=%d", count);
    return false;
  }
  if (broker->GetJwtFromServer(ZLT::String::UTF16ToUTF8(session), jwt) == 0 && !jwt.empty()) {
    return true;
  }
  logger.e(L"KIV.GetJwtFromServer: Failed to get Jwt from server. count=%d", count);
  return false;
}

}  // namespace

std::wstring TolmarAgent::GetJwtFromServer() {
  std::string jwt;
  for (int count = 0; count < TokenAttempts && !TryToObtain(count, jwt); ++count) {
  }
  return ZLT::String::UTF8ToUTF16(jwt);
}

std::wstring TolmarAgent::HeaderBlock(const std::wstring& token) {
  return L"Content-Type: application/json\r\ntoken: " + token;
}
