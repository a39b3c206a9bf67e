#include "reference_host/http/HttpExchange.h"

#include <array>
#include <atomic>
#include <cwchar>

#include "reference_host/base/ModulePin.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

constexpr const wchar_t* SuiteAgent = L"TolmarHost/1.0";

std::atomic<RefusalObserver> refusalObserver{nullptr};

/// A system that does not know TLS 1.3 refuses the option as a whole. One that knows it but has it
/// switched off negotiates 1.2.
void ChooseProtocols(HINTERNET session) {
  DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
  if (WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols)) {
    return;
  }
  protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
  WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols);
}

HINTERNET OpenWith(DWORD access, const std::wstring& proxy) {
  return proxy.empty()
             ? WinHttpOpen(SuiteAgent, access, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0)
             : WinHttpOpen(SuiteAgent, WINHTTP_ACCESS_TYPE_NAMED_PROXY, proxy.c_str(),
                           LoopbackHosts, 0);
}

HINTERNET OpenSession() {
  // WinHTTP has threads and connections from now on, so it must not be unloaded with this DLL.
  PinModule();
  // The machine's own proxy settings; systems before 8.1 know only the older way to ask for them.
  const std::wstring& proxy = Settings().proxy;
  HINTERNET session = OpenWith(WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY, proxy);
  if (session == nullptr) session = OpenWith(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, proxy);
  ChooseProtocols(session);
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

bool Transmit(HINTERNET request, std::string_view body) {
  const auto length = static_cast<DWORD>(body.size());
  void* bytes = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
  return WinHttpSendRequest(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, bytes, length, length, 0) &&
         WinHttpReceiveResponse(request, nullptr);
}

/// A server may ask for a certificate of the client's and do without. @return true when the request
/// is ready to be sent without one.
bool DeclineCertificate(HINTERNET request) {
  return GetLastError() == ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED &&
         WinHttpSetOption(request, WINHTTP_OPTION_CLIENT_CERT_CONTEXT,
                          WINHTTP_NO_CLIENT_CERT_CONTEXT, 0);
}

bool ReadStatus(HINTERNET request, unsigned long& status) {
  DWORD number = 0, size = sizeof number;
  const bool read =
      WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &number, &size, WINHTTP_NO_HEADER_INDEX);
  if (read) status = number;
  return read;
}

std::optional<std::uint64_t> ParseLength(const std::wstring& text) {
  wchar_t* end = nullptr;
  const std::uint64_t length = std::wcstoull(text.c_str(), &end, 10);
  if (end == text.c_str() || *end != L'\0') return std::nullopt;
  return length;
}

/// @return the last error, never 0.
unsigned long LastError() {
  const unsigned long error = GetLastError();
  if (error == ERROR_SUCCESS) return ERROR_WINHTTP_INTERNAL_ERROR;
  return wine::IsInForce() ? wine::AsWinHttpError(error) : error;
}

}  // namespace

void ObserveRefusals(RefusalObserver observer) { refusalObserver = observer; }

unsigned long HttpExchange::Send(const HttpCall& call) {
  Url url;
  if (!ParseUrl(call.url, url)) return ERROR_WINHTTP_INVALID_URL;
  if (!IsAllowedUrl(call.url)) return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
  _connection.reset(WinHttpConnect(Session(), url.host.c_str(), url.port, 0));
  if (!_connection) return LastError();
  _request.reset(WinHttpOpenRequest(_connection.get(), call.verb, url.pathAndQuery.c_str(), nullptr,
                                    WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                    url.secure ? WINHTTP_FLAG_SECURE : 0));
  HINTERNET request = _request.get();
  if (request == nullptr || !Prepare(request, call, url.host)) return LastError();
  const bool answered =
      Transmit(request, call.body) || (DeclineCertificate(request) && Transmit(request, call.body));
  if (!answered || !ReadStatus(request, _status)) return LastError();
  const RefusalObserver observer = refusalObserver;
  if (_status == HTTP_STATUS_DENIED && observer != nullptr) observer(call.headers);
  return 0;
}

std::optional<std::int64_t> HttpExchange::ServerTime() const {
  constexpr std::int64_t SecondsBefore1970 = 11644473600;  // since the year 1601
  SYSTEMTIME time{};
  FILETIME ticks{};
  DWORD size = sizeof time;
  const bool told =
      WinHttpQueryHeaders(_request.get(), WINHTTP_QUERY_DATE | WINHTTP_QUERY_FLAG_SYSTEMTIME,
                          WINHTTP_HEADER_NAME_BY_INDEX, &time, &size, WINHTTP_NO_HEADER_INDEX);
  if (!told || !SystemTimeToFileTime(&time, &ticks)) return std::nullopt;
  const auto high = static_cast<std::int64_t>(ticks.dwHighDateTime);
  return (high << 32 | ticks.dwLowDateTime) / 10'000'000 - SecondsBefore1970;
}

/// @param which in, WinHTTP's number of a header. @return its text, empty when there is none.
std::wstring HttpExchange::Header(unsigned long which) const {
  std::array<wchar_t, 64> text{};
  DWORD size = sizeof text;
  const BOOL found = WinHttpQueryHeaders(_request.get(), which, WINHTTP_HEADER_NAME_BY_INDEX,
                                         text.data(), &size, WINHTTP_NO_HEADER_INDEX);
  return found ? text.data() : std::wstring();
}

std::optional<std::uint64_t> HttpExchange::AnnouncedLength() const {
  return ParseLength(Header(WINHTTP_QUERY_CONTENT_LENGTH));
}

std::optional<std::uint64_t> HttpExchange::WholeLength() const {
  const std::wstring range = Header(WINHTTP_QUERY_CONTENT_RANGE);
  const std::size_t slash = range.find(L'/');
  if (slash == std::wstring::npos) return std::nullopt;
  return ParseLength(range.substr(slash + 1));
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
