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
/// @return 0 when somebody is signed in, else the system's error.
DWORD ErrorOfUser(DWORD session) {
  HANDLE token = nullptr;
  if (!WTSQueryUserToken(session, &token)) return GetLastError();
  CloseHandle(token);
  return 0;
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

SessionToken TokenForUserSession() {
  DWORD session = WTSGetActiveConsoleSessionId();
  if (session == NoSession || IsOwnSession(session)) return {};
  const DWORD error = ErrorOfUser(session);
  if (error != 0) return {Handle(), error == ERROR_NO_TOKEN ? 0 : error};
  Handle token = DuplicateOwnToken();
  if (!token || !SetTokenInformation(token.Get(), TokenSessionId, &session, sizeof session)) {
    return {Handle(), GetLastError()};
  }
  return {std::move(token), 0};
}

}  // namespace refhost
