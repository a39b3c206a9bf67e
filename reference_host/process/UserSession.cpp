#include "reference_host/process/UserSession.h"

// Behind windows.h, whose types it needs.
#include <wtsapi32.h>

namespace refhost {

namespace {

constexpr DWORD NoSession = 0xFFFFFFFF;

bool IsOwnSession(DWORD session) {
  DWORD own = NoSession;
  return ProcessIdToSessionId(GetCurrentProcessId(), &own) && own == session;
}

/// The console has a session even while only the logon screen is shown.
bool IsSomebodySignedIn(DWORD session) {
  HANDLE token = nullptr;
  return WTSQueryUserToken(session, &token) && Handle(token);
}

Handle DuplicateOwnToken() {
  HANDLE own = nullptr;
  constexpr DWORD Rights = TOKEN_DUPLICATE | TOKEN_QUERY;
  if (!OpenProcessToken(GetCurrentProcess(), Rights, &own)) return Handle();
  const Handle owner(own);
  HANDLE copy = nullptr;
  DuplicateTokenEx(own, MAXIMUM_ALLOWED, nullptr, SecurityImpersonation, TokenPrimary, &copy);
  return Handle(copy);
}

}  // namespace

Handle TokenForUserSession() {
  DWORD session = WTSGetActiveConsoleSessionId();
  if (session == NoSession || IsOwnSession(session) || !IsSomebodySignedIn(session)) {
    return Handle();
  }
  Handle token = DuplicateOwnToken();
  if (!token || !SetTokenInformation(token.Get(), TokenSessionId, &session, sizeof session)) {
    return Handle();
  }
  return token;
}

}  // namespace refhost
