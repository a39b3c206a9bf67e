#pragma once

#include <sstream>
#include <string>

#include "host/Export.h"

namespace ZLT {

/// Time-outs of one exchange, in milliseconds.
struct ZLT_API HttpTimeouts {
  int resolve;  ///< until the name is an address
  int connect;  ///< until the connection stands
  int send;     ///< for the request
  int receive;  ///< for the reply

  /// What the suite uses where nothing else is asked for.
  static const HttpTimeouts DEFAULT;
};

/// One HTTPS exchange. An object serves one request on one thread; different objects work on
/// different threads at the same time.
class ZLT_API HttpRequest {
 public:
  /// @param url in, absolute; https, or http to a loopback host.
  /// @param userAgent in, an empty text: the suite's own.
  /// @param proxy in, null: the machine's settings.
  /// @param timeouts in, milliseconds.
  HttpRequest(const wchar_t* url, const wchar_t* userAgent, const wchar_t* proxy,
              HttpTimeouts timeouts);
  ~HttpRequest();
  HttpRequest(const HttpRequest&) = delete;
  HttpRequest& operator=(const HttpRequest&) = delete;

  /// Sends a POST and receives the whole reply; blocks for at most the time-outs.
  /// @param body in, `length` bytes. @param length in, bytes.
  /// @param headers in, header lines separated by CR LF; the last needs none.
  /// @return true when a whole reply arrived, whatever its status. On false `getStatusCode` tells
  /// why.
  bool doPost(const char* body, unsigned long length, const wchar_t* headers);

  /// @return the reply's HTTP status, or, when no whole reply arrived, the transport's error number
  /// (WinHTTP's: 12007 name not resolved, 12029 cannot connect, ...); 0 before `doPost`.
  unsigned long getStatusCode() const;

  /// @return the number of bytes that the reply's body has.
  unsigned long getStreamLength() const;

  /// @return the reply's body; valid as long as this object.
  std::stringstream& getStream();

  /// Fetches one file; blocks. The file appears under its name only when it is whole.
  /// @param url in, as for the constructor. @param localPath in, full path, in a folder that
  /// `FileSystem::createDirectory` would take for a restricted one; an existing file is replaced.
  /// @param headers in, as for `doPost`.
  /// @return true when the file was answered with status 200 and stored.
  static bool DownloadFile(const std::wstring& url, const std::wstring& localPath,
                           const std::wstring& headers);

 private:
  struct State;
  State* m_pState;
};

}  // namespace ZLT
