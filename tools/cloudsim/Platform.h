#pragma once

#include <httplib.h>

#include <ctime>
#include <memory>
#include <string>

/// What the system does for the simulator: in native/ and windows/, of which the build picks one.
namespace cloudsim {

/// Certificate and key for https, as PEM files; empty for http.
struct TlsFiles {
  std::string certificate;
  std::string key;
};

/// @return a server that nobody has bound yet. @throws std::runtime_error when the files are
/// unusable, as they always are on Windows: https is not offered there.
std::unique_ptr<httplib::Server> NewServer(const TlsFiles& tls);

/// Keeps every other program from the port that the socket is going to be bound to.
void KeepPort(socket_t socket);

/// @return so many bytes of the system's random source. @throws std::runtime_error when it has
/// none.
std::string RandomBytes(std::size_t count);

std::string HmacSha256(const std::string& key, const std::string& text);

/// @return base64 with padding, in one line.
std::string Base64Encode(const std::string& bytes);

/// @param text in, as `Base64Encode` gives it. @return the bytes, zeros may stand behind them in
/// the padding's place; none for another text.
std::string Base64Decode(const std::string& text);

std::tm Utc(std::time_t time);

/// Sees Ctrl-C, and natively SIGTERM. Made before there is another thread, one a process.
class EndWatch {
 public:
  EndWatch();

  /// Blocks until one of them comes.
  void Wait();
};

}  // namespace cloudsim
