#include "tools/cloudsim/Platform.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <sys/socket.h>

#include <csignal>
#include <stdexcept>

namespace cloudsim {
namespace {

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

sigset_t EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

/// A client that sends the head and the body of a request in two pieces may hold the second back
/// until the first is acknowledged (Wine's WinHTTP does), and the system likes to put that off by
/// 40 ms: each piece is acknowledged as it comes.
void AcknowledgeAtOnce(int isWrite, int, int type, const void*, std::size_t, SSL* ssl, void*) {
  if (isWrite != 0 || type != SSL3_RT_HEADER) return;
  const int yes = 1;
  setsockopt(SSL_get_fd(ssl), IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof yes);
}

}  // namespace

std::unique_ptr<httplib::Server> NewServer(const TlsFiles& tls) {
  if (tls.certificate.empty()) return std::make_unique<httplib::Server>();
  auto server = std::make_unique<httplib::SSLServer>(tls.certificate.c_str(), tls.key.c_str());
  if (!server->is_valid()) {
    throw std::runtime_error("cannot use certificate " + tls.certificate + " with key " + tls.key);
  }
  SSL_CTX_set_msg_callback(server->ssl_context(), &AcknowledgeAtOnce);
  return server;
}

/// Not SO_REUSEPORT, the library's default, with which a second simulator would share the port.
void KeepPort(socket_t socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  if (RAND_bytes(Bytes(bytes), static_cast<int>(count)) != 1) {
    throw std::runtime_error("the system gives no random bytes");
  }
  return bytes;
}

std::string HmacSha256(const std::string& key, const std::string& text) {
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  unsigned int length = 0;
  HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), Bytes(text), text.size(),
       Bytes(digest), &length);
  digest.resize(length);
  return digest;
}

std::string Base64Encode(const std::string& bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()));
  text.pop_back();  // the terminator
  return text;
}

std::string Base64Decode(const std::string& text) {
  std::string bytes(text.size(), '\0');
  const int length = EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size()));
  bytes.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  return bytes;
}

std::tm Utc(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  return parts;
}

/// Blocked in this thread and in those that it starts.
EndWatch::EndWatch() {
  const sigset_t signals = EndSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void EndWatch::Wait() {
  const sigset_t signals = EndSignals();
  int received = 0;
  sigwait(&signals, &received);
}

}  // namespace cloudsim
