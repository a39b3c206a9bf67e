#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <winhttp.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/common/HttpRequest.h"
#include "reference_host/base/Url.h"

namespace refhost {

/// What to ask, and how.
struct HttpCall {
  const wchar_t* verb = L"GET";
  std::wstring url;      ///< https, or http to a loopback host
  std::wstring headers;  ///< lines separated by CR LF; the last needs none
  std::string_view body{};
  std::wstring userAgent{};  ///< empty: the suite's own
  std::wstring proxy{};      ///< empty: the configuration's, else the machine's settings
  ZLT::HttpTimeouts timeouts = ZLT::HttpTimeouts::DEFAULT;
};

/// Bounds for a reply's body.
struct HttpLimits {
  std::uint64_t maxBytes;
  std::chrono::milliseconds maxDuration = std::chrono::hours(24);
};

/// Is told the headers of a request that was answered with status 401. Any thread; does not throw.
using RefusalObserver = void (*)(const std::wstring& headers);

/// Has all such requests of the process told to `observer` from now on, and to no other.
void ObserveRefusals(RefusalObserver observer);

/// One request and its reply over the process's one WinHTTP session. Redirects are not followed and
/// no cookies or logon data are sent: what the headers carry reaches the host of the URL only.
/// Nothing is sent a second time but for a server that had asked for a client's certificate. One
/// thread; errors are WinHTTP's numbers, 0 for none.
class HttpExchange {
 public:
  /// Takes a piece of the body. @return 0, or the error that ends the exchange.
  using Sink = std::function<unsigned long(const char*, std::size_t)>;

  HttpExchange() = default;
  HttpExchange(const HttpExchange&) = delete;
  HttpExchange& operator=(const HttpExchange&) = delete;

  /// Sends the request and receives the head of the reply; blocks for at most the time-outs.
  unsigned long Send(const HttpCall& call);

  /// @return the reply's HTTP status; 0 before `Send` has succeeded.
  unsigned long Status() const { return _status; }

  /// @return the reply's `Date`, in seconds since 1970-01-01 00:00 UTC; nothing when there is none.
  std::optional<std::int64_t> ServerTime() const;

  /// @return the announced length of the body; nothing when none was announced.
  std::optional<std::uint64_t> AnnouncedLength() const;

  /// @return the length of the whole file that a part was asked of (statuses 206 and 416); nothing
  /// when the reply does not tell it.
  std::optional<std::uint64_t> WholeLength() const;

  /// Receives the body. One that ends before its announced length is an error (12030, the
  /// connection broke), as is one over the limits (12184 too long, 12002 too slow).
  unsigned long ReadBody(const HttpLimits& limits, const Sink& sink) const;

 private:
  struct Closer {
    void operator()(void* handle) const { WinHttpCloseHandle(handle); }
  };
  using Handle = std::unique_ptr<void, Closer>;

  std::wstring Header(unsigned long which) const;

  Handle _connection;
  Handle _request;
  unsigned long _status = 0;
};

}  // namespace refhost
