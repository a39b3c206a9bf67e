#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// A request as the server has received it.
struct HttpSeen {
  std::string method;
  std::string target;
  std::string headers;  ///< lines, as sent
  std::string body;
  int connection;  ///< number of the connection that it came over, from 1
};

/// What the server does with a request.
struct HttpAnswer {
  int status = 200;
  std::string body{};
  std::string headers{};                   ///< further lines, each with CR LF
  std::optional<std::size_t> announced{};  ///< Content-Length, when not that of the body
  bool unannounced = false;            ///< no Content-Length; the connection's end ends the body
  bool ranges = false;                 ///< for the test: parts may be asked for
  bool close = false;                  ///< the connection is closed behind the reply
  bool drop = false;                   ///< the connection is closed in the place of a reply
  std::chrono::milliseconds delay{0};  ///< before the reply
  std::chrono::milliseconds stall{0};  ///< behind the reply
};

/// An HTTP server on 127.0.0.1 that a test scripts. It serves each connection on a thread of its
/// own and answers HEAD with the head only.
class LoopbackServer {
 public:
  using Handler = std::function<HttpAnswer(const HttpSeen&)>;

  explicit LoopbackServer(Handler handler = {});
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// From now on `handler` answers, and `Seen` is empty.
  void Script(Handler handler);

  std::uint16_t Port() const { return _port; }
  std::wstring Url(const std::wstring& path) const;
  std::vector<HttpSeen> Seen() const;

  /// Blocks until the server has closed so many connections.
  void WaitForClosed(int count);

 private:
  using Socket = std::uintptr_t;  ///< as Winsock has it

  void Accept();
  void Serve(Socket socket, int number);
  bool Receive(Socket socket, std::string& pending, HttpSeen& seen) const;
  bool ReceiveMore(Socket socket, std::string& pending) const;
  bool IsStopping() const;
  HttpAnswer AnswerTo(const HttpSeen& seen);
  bool WaitDelay(std::chrono::milliseconds delay);

  mutable std::mutex _mutex;
  std::condition_variable _stopped;
  std::condition_variable _closed;
  int _closedCount = 0;
  bool _stopping = false;
  Handler _handler;
  std::vector<HttpSeen> _seen;
  std::vector<Socket> _open;
  std::vector<std::thread> _threads;
  Socket _listener = 0;
  std::uint16_t _port = 0;
  std::thread _acceptor;
};

/// @return the port of 127.0.0.1 that nobody listened on a moment ago.
std::uint16_t UnusedPort();
