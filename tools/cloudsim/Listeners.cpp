#include "tools/cloudsim/Listeners.h"

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

/// The library tells no time, as servers do.
void TellTime(const httplib::Request&, httplib::Response& response) {
  const std::tm utc = Utc(std::time(nullptr));
  char text[64];
  std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &utc);
  response.set_header("Date", text);
}

std::unique_ptr<httplib::Server> MakeServer(const TlsFiles& tls) {
  std::unique_ptr<httplib::Server> server = NewServer(tls);
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
  socket_t listening = INVALID_SOCKET;
  server.set_socket_options([&listening](socket_t socket) {
    KeepPort(socket);
    listening = socket;
  });
  const int bound = port == 0                            ? server.bind_to_any_port(address)
                    : server.bind_to_port(address, port) ? port
                                                         : -1;
  server.set_socket_options({});
  // The server has called listen with a backlog of 5; calling it again widens the queue, natively.
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
