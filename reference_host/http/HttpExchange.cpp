#include "reference_host/http/HttpExchange.h"

#include <array>
#include <cwchar>

#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

constexpr const wchar_t* SuiteAgent = L"TolmarHost/1.0";

HINTERNET OpenSession() {
  // The machine's own proxy settings; systems before 8.1 know only the older way to ask for them.
  HINTERNET session = WinHttpOpen(SuiteAgent, WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY,
                                  WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
  if (session == nullptr) {
    session = WinHttpOpen(SuiteAgent, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                          WINHTTP_NO_PROXY_BYPASS, 0);
  }
  DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
  if (!WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols)) {
    protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols);
  }
  return session;
}

/// One for the process, so that connections are reused. Never closed: at unload, threads that might
/// still use it are gone without a word.
HINTERNET Session() {
  static const HINTERNET session = OpenSession();
  return session;
}

/// What is meant for this machine does not go through a proxy, where http would carry tokens out.
bool ChooseProxy(HINTERNET request, const std::wstring& proxy, const std::wstring& host) {
  if (proxy.empty() && !IsLoopbackHost(host)) return true;
  WINHTTP_PROXY_INFO info{};
  info.dwAccessType = WINHTTP_ACCESS_TYPE_NO_PROXY;
  std::wstring name = proxy;
  if (!IsLoopbackHost(host)) {
    info.dwAccessType = WINHTTP_ACCESS_TYPE_NAMED_PROXY;
    info.lpszProxy = name.data();
  }
  return WinHttpSetOption(request, WINHTTP_OPTION_PROXY, &info, sizeof info) != 0;
}

/// Redirects would take the headers' token to another host, logon data and cookies are nobody's
/// business.
bool Restrict(HINTERNET request) {
  DWORD off = WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_AUTHENTICATION;
  return WinHttpSetOption(request, WINHTTP_OPTION_DISABLE_FEATURE, &off, sizeof off) != 0;
}

bool AddHeaders(HINTERNET request, const std::wstring& headers) {
  return headers.empty() ||
         WinHttpAddRequestHeaders(request, headers.c_str(), static_cast<DWORD>(headers.size()),
                                  WINHTTP_ADDREQ_FLAG_ADD | WINHTTP_ADDREQ_FLAG_REPLACE) != 0;
}

/// The wait for the head of the reply has a limit of its own, which the usual call leaves alone.
bool Limit(HINTERNET request, const ZLT::HttpTimeouts& limits) {
  auto head = static_cast<DWORD>(limits.receive);
  return WinHttpSetTimeouts(request, limits.resolve, limits.connect, limits.send, limits.receive) &&
         WinHttpSetOption(request, WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &head, sizeof head);
}

bool Prepare(HINTERNET request, const HttpCall& call, const std::wstring& host) {
  const std::wstring agent =
      call.userAgent.empty() ? std::wstring() : L"User-Agent: " + call.userAgent;
  return Limit(request, call.timeouts) && Restrict(request) &&
         ChooseProxy(request, call.proxy, host) && AddHeaders(request, call.headers) &&
         AddHeaders(request, agent);
}

/// Called when a connection is made; not when an idle one is used again.
void CALLBACK NoteNewConnection(HINTERNET, DWORD_PTR madeAnew, DWORD, void*, DWORD) {
  *reinterpret_cast<bool*>(madeAnew) = true;
}

/// @param madeAnew out, whether a connection was made for it; until the request is closed.
bool Transmit(HINTERNET request, std::string_view body, bool& madeAnew) {
  madeAnew = false;
  WinHttpSetStatusCallback(request, &NoteNewConnection, WINHTTP_CALLBACK_FLAG_CONNECT_TO_SERVER, 0);
  const auto length = static_cast<DWORD>(body.size());
  void* bytes = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
  return WinHttpSendRequest(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, bytes, length, length,
                            reinterpret_cast<DWORD_PTR>(&madeAnew)) &&
         WinHttpReceiveResponse(request, nullptr);
}

bool ReadStatus(HINTERNET request, unsigned long& status) {
  DWORD number = 0, size = sizeof number;
  const bool read =
      WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &number, &size, WINHTTP_NO_HEADER_INDEX);
  if (read) status = number;
  return read;
}

/// @return the last error, never 0.
unsigned long LastError() {
  const unsigned long error = GetLastError();
  if (error == ERROR_SUCCESS) return ERROR_WINHTTP_INTERNAL_ERROR;
  return wine::IsInForce() ? wine::AsWinHttpError(error) : error;
}

}  // namespace

unsigned long HttpExchange::Send(const HttpCall& call) {
  Url url;
  if (!ParseUrl(call.url, url)) return ERROR_WINHTTP_INVALID_URL;
  if (!IsAllowedUrl(call.url)) return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
  _connection.reset(WinHttpConnect(Session(), url.host.c_str(), url.port, 0));
  if (!_connection) return LastError();
  const unsigned long error = SendOnce(call, url);
  if (!wine::IsInForce()) return error;
  return wine::SendOverIdleConnections(error, [&]() -> std::optional<unsigned long> {
    if (_madeAnew) return std::nullopt;
    return SendOnce(call, url);
  });
}

unsigned long HttpExchange::SendOnce(const HttpCall& call, const Url& url) {
  _madeAnew = true;
  _request.reset(WinHttpOpenRequest(_connection.get(), call.verb, url.pathAndQuery.c_str(), nullptr,
                                    WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                    url.secure ? WINHTTP_FLAG_SECURE : 0));
  const bool answered = _request && Prepare(_request.get(), call, url.host) &&
                        Transmit(_request.get(), call.body, _madeAnew) &&
                        ReadStatus(_request.get(), _status);
  return answered ? 0 : LastError();
}

std::optional<std::uint64_t> HttpExchange::AnnouncedLength() const {
  std::array<wchar_t, 32> text{};
  DWORD size = sizeof text;
  if (!WinHttpQueryHeaders(_request.get(), WINHTTP_QUERY_CONTENT_LENGTH,
                           WINHTTP_HEADER_NAME_BY_INDEX, text.data(), &size,
                           WINHTTP_NO_HEADER_INDEX)) {
    return std::nullopt;
  }
  wchar_t* end = text.data();
  const std::uint64_t length = std::wcstoull(text.data(), &end, 10);
  if (end == text.data() || *end != L'\0') return std::nullopt;
  return length;
}

std::optional<std::int64_t> HttpExchange::Date() const {
  constexpr std::int64_t TicksPerSecond = 10'000'000;
  constexpr std::int64_t SecondsFrom1601To1970 = 11'644'473'600;
  SYSTEMTIME date{};
  DWORD size = sizeof date;
  FILETIME ticks{};
  if (!WinHttpQueryHeaders(_request.get(), WINHTTP_QUERY_DATE | WINHTTP_QUERY_FLAG_SYSTEMTIME,
                           WINHTTP_HEADER_NAME_BY_INDEX, &date, &size, WINHTTP_NO_HEADER_INDEX) ||
      !SystemTimeToFileTime(&date, &ticks)) {
    return std::nullopt;
  }
  const std::int64_t all = std::int64_t{ticks.dwHighDateTime} << 32 | ticks.dwLowDateTime;
  return all / TicksPerSecond - SecondsFrom1601To1970;
}

unsigned long HttpExchange::ReadBody(const HttpLimits& limits, const Sink& sink) const {
  const auto begin = std::chrono::steady_clock::now();
  const std::optional<std::uint64_t> announced = AnnouncedLength();
  if (announced && *announced > limits.maxBytes) return ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW;
  std::array<char, 65536> buffer;
  for (std::uint64_t received = 0;;) {
    DWORD count = 0;
    if (!WinHttpReadData(_request.get(), buffer.data(), buffer.size(), &count)) return LastError();
    if (count == 0) {
      return announced && received != *announced ? ERROR_WINHTTP_CONNECTION_ERROR : 0;
    }
    received += count;
    if (received > limits.maxBytes) return ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW;
    if (std::chrono::steady_clock::now() - begin > limits.maxDuration) return ERROR_WINHTTP_TIMEOUT;
    if (const unsigned long error = sink(buffer.data(), count)) return error;
  }
}

}  // namespace refhost
