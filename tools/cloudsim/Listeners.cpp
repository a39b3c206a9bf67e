#include "tools/cloudsim/Listeners.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>
#include <utility>

namespace cloudsim {
namespace {

constexpr std::size_t MaxConnections = 128;  ///< at once and per address; each takes a thread
constexpr int Backlog = 512;                 ///< connections of a fleet that starts all at once
constexpr std::size_t MaxRequestBody = 1u << 20;
constexpr int KeepAliveSeconds = 60;
constexpr int WriteSeconds = 60;
constexpr int BindAttempts = 8;
constexpr auto StopPatience = std::chrono::milliseconds(250);

/// A client that sends the head and the body of a request in two pieces may hold the second back
/// until the first is acknowledged (Wine's WinHTTP does), and the system likes to put that off by
/// 40 ms: each piece is acknowledged as it comes.
void AcknowledgeAtOnce(int isWrite, int, int type, const void*, std::size_t, SSL* ssl, void*) {
  if (isWrite != 0 || type != SSL3_RT_HEADER) return;
  const int yes = 1;
  setsockopt(SSL_get_fd(ssl), IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof yes);
}

std::unique_ptr<httplib::Server> MakeTlsServer(const TlsFiles& tls) {
  auto server = std::make_unique<httplib::SSLServer>(tls.certificate.c_str(), tls.key.c_str());
  if (server->is_valid()) SSL_CTX_set_msg_callback(server->ssl_context(), &AcknowledgeAtOnce);
  return server;
}

/// The library tells no time, as servers do.
void TellTime(const httplib::Request&, httplib::Response& response) {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[64];
  std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &utc);
  response.set_header("Date", text);
}

std::unique_ptr<httplib::Server> MakeServer(const TlsFiles& tls) {
  std::unique_ptr<httplib::Server> server =
      tls.certificate.empty() ? std::make_unique<httplib::Server>() : MakeTlsServer(tls);
  if (!server->is_valid()) {
    throw std::runtime_error("cannot use certificate " + tls.certificate + " with key " + tls.key);
  }
  server->new_task_queue = [] { return new httplib::ThreadPool(MaxConnections); };
  server->set_keep_alive_max_count(1'000'000);
  server->set_keep_alive_timeout(KeepAliveSeconds);
  server->set_write_timeout(WriteSeconds);
  server->set_payload_max_length(MaxRequestBody);
  server->set_tcp_nodelay(true);
  server->set_post_routing_handler(TellTime);
  return server;
}

/// Binds `server`. @param port in, 0 for a free one. @return the port, -1 on failure.
int Bind(httplib::Server& server, const char* address, int port) {
  int listening = -1;
  server.set_socket_options([&listening](int socket) {
    // Not SO_REUSEPORT, the default, with which a second simulator would share the port.
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    listening = socket;
  });
  const int bound = port == 0                            ? server.bind_to_any_port(address)
                    : server.bind_to_port(address, port) ? port
                                                         : -1;
  server.set_socket_options({});
  // The server has called listen with a backlog of 5; calling it again widens the queue.
  if (bound > 0) ::listen(listening, Backlog);
  return bound;
}

}  // namespace

Listeners::Listeners(const TlsFiles& tls, int port) {
  // A free port of 127.0.0.1 may be taken on ::1: then another one is asked for. Without ::1 at
  // all, or with a port that was named, 127.0.0.1 alone must do in the end.
  for (int attempt = 1; attempt <= BindAttempts; ++attempt) {
    if (TryBind(tls, port, port == 0 && attempt < BindAttempts)) return;
  }
  throw std::runtime_error("cannot listen on port " + std::to_string(port) + " of 127.0.0.1");
}

bool Listeners::TryBind(const TlsFiles& tls, int port, bool needsBoth) {
  _servers.clear();
  _servers.push_back(MakeServer(tls));
  _port = Bind(*_servers.back(), "127.0.0.1", port);
  if (_port < 0) return false;
  std::unique_ptr<httplib::Server> second = MakeServer(tls);
  const bool hasBoth = Bind(*second, "::1", _port) > 0;
  if (hasBoth) _servers.push_back(std::move(second));
  return hasBoth || !needsBoth;
}

void Listeners::Start() {
  for (const auto& server : _servers) {
    _running.push_back(
        std::async(std::launch::async, [&server] { return server->listen_after_bind(); }));
    // Before it runs it cannot be stopped.
    const auto ended = [this] {
      return _running.back().wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    while (!server->is_running() && !ended()) std::this_thread::yield();
  }
}

bool Listeners::Stop() {
  for (const auto& server : _servers) server->stop();
  const auto deadline = std::chrono::steady_clock::now() + StopPatience;
  return std::all_of(_running.begin(), _running.end(), [&](const std::future<bool>& running) {
    return running.wait_until(deadline) == std::future_status::ready;
  });
}

}  // namespace cloudsim
