#include "tests/host/windows/LoopbackServer.h"

#include <winsock2.h>

#include <stdexcept>

namespace {

SOCKET ListenOnFreePort(std::uint16_t& port) {
  WSADATA data{};
  WSAStartup(MAKEWORD(2, 2), &data);
  const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 16) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    throw std::runtime_error("no loopback server");
  }
  port = ntohs(address.sin_port);
  return listener;
}

void Send(SOCKET socket, const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const int count = send(socket, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

std::string HeadOf(const HttpAnswer& answer) {
  std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n" + answer.headers;
  if (answer.unannounced) return head + "Connection: close\r\n\r\n";
  const std::size_t length = answer.announced.value_or(answer.body.size());
  return head + "Content-Length: " + std::to_string(length) + "\r\n\r\n";
}

/// Headers are looked up as the clients used here write them.
std::size_t BodyLengthOf(const std::string& headers) {
  const std::string name = "\r\nContent-Length: ";
  const std::size_t at = headers.find(name);
  return at == std::string::npos ? 0 : std::stoul(headers.substr(at + name.size()));
}

}  // namespace

LoopbackServer::LoopbackServer(Handler handler) : _handler(std::move(handler)) {
  _listener = ListenOnFreePort(_port);
  _acceptor = std::thread([this] { Accept(); });
}

LoopbackServer::~LoopbackServer() {
  {
    const std::scoped_lock lock(_mutex);
    _stopping = true;
    for (const SOCKET socket : _open) shutdown(socket, SD_BOTH);
  }
  _stopped.notify_all();
  shutdown(_listener, SD_BOTH);
  closesocket(_listener);
  _acceptor.join();
  for (std::thread& thread : _threads) thread.join();
  for (const SOCKET socket : _open) closesocket(socket);
}

void LoopbackServer::Script(Handler handler) {
  const std::scoped_lock lock(_mutex);
  _handler = std::move(handler);
  _seen.clear();
}

std::wstring LoopbackServer::Url(const std::wstring& path) const {
  return L"http://127.0.0.1:" + std::to_wstring(_port) + path;
}

std::vector<HttpSeen> LoopbackServer::Seen() const {
  const std::scoped_lock lock(_mutex);
  return _seen;
}

void LoopbackServer::WaitForClosed(int count) {
  std::unique_lock lock(_mutex);
  _closed.wait(lock, [&] { return _closedCount >= count; });
}

void LoopbackServer::Accept() {
  for (int number = 1;; ++number) {
    const SOCKET socket = accept(_listener, nullptr, nullptr);
    const std::scoped_lock lock(_mutex);
    if (socket == INVALID_SOCKET || _stopping) return;
    _open.push_back(socket);
    _threads.emplace_back([this, socket, number] { Serve(socket, number); });
  }
}

void LoopbackServer::Serve(Socket socket, int number) {
  std::string pending;
  HttpSeen seen{};
  seen.connection = number;
  while (Receive(socket, pending, seen)) {
    const HttpAnswer answer = AnswerTo(seen);
    if (!WaitDelay(answer.delay) || answer.drop) break;
    Send(socket, HeadOf(answer) + (seen.method == "HEAD" ? std::string() : answer.body));
    if (seen.method != "HEAD" && !WaitDelay(answer.stall)) break;
    const bool cut = answer.announced.value_or(answer.body.size()) > answer.body.size();
    if (answer.close || answer.unannounced || cut) break;
  }
  shutdown(socket, SD_BOTH);
  const std::scoped_lock lock(_mutex);
  ++_closedCount;
  _closed.notify_all();
}

bool LoopbackServer::ReceiveMore(Socket socket, std::string& pending) const {
  // Shutting a socket down does not end another thread's wait for it everywhere.
  fd_set readable;
  timeval step{0, 50000};
  do {
    if (IsStopping()) return false;
    FD_ZERO(&readable);
    FD_SET(socket, &readable);
  } while (select(0, &readable, nullptr, nullptr, &step) == 0);
  char buffer[4096];
  const int count = recv(socket, buffer, sizeof buffer, 0);
  if (count > 0) pending.append(buffer, static_cast<std::size_t>(count));
  return count > 0;
}

bool LoopbackServer::IsStopping() const {
  const std::scoped_lock lock(_mutex);
  return _stopping;
}

bool LoopbackServer::Receive(Socket socket, std::string& pending, HttpSeen& seen) const {
  std::size_t end;
  while ((end = pending.find("\r\n\r\n")) == std::string::npos) {
    if (!ReceiveMore(socket, pending)) return false;
  }
  const std::size_t line = pending.find("\r\n");
  const std::size_t blank = pending.find(' ');
  seen.method = pending.substr(0, blank);
  seen.target = pending.substr(blank + 1, pending.find(' ', blank + 1) - blank - 1);
  seen.headers = pending.substr(line, end + 2 - line);
  // To a proxy Wine announces the body that it means to send behind it.
  const std::size_t length = seen.method == "CONNECT" ? 0 : BodyLengthOf(seen.headers);
  while (pending.size() < end + 4 + length) {
    if (!ReceiveMore(socket, pending)) return false;
  }
  seen.body = pending.substr(end + 4, length);
  pending.erase(0, end + 4 + length);
  return true;
}

HttpAnswer LoopbackServer::AnswerTo(const HttpSeen& seen) {
  Handler handler;
  {
    const std::scoped_lock lock(_mutex);
    _seen.push_back(seen);
    handler = _handler;
  }
  return handler ? handler(seen) : HttpAnswer{.status = 404};
}

bool LoopbackServer::WaitDelay(std::chrono::milliseconds delay) {
  std::unique_lock lock(_mutex);
  return !_stopped.wait_for(lock, delay, [this] { return _stopping; });
}

std::uint16_t UnusedPort() {
  std::uint16_t port = 0;
  closesocket(ListenOnFreePort(port));
  return port;
}
