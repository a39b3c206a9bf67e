#include "tools/cloudsim/Platform.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <bcrypt.h>
#include <wincrypt.h>

#include <stdexcept>

namespace cloudsim {
namespace {

constexpr std::size_t DigestBytes = 32;

UCHAR* Bytes(const std::string& text) {  // CNG takes the bytes that it reads as changeable ones.
  return reinterpret_cast<UCHAR*>(const_cast<char*>(text.data()));
}

void Require(NTSTATUS status, const char* what) {
  if (status < 0) throw std::runtime_error(what);
}

HANDLE EndEvent() {
  static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return event;
}

BOOL WINAPI OnControl(DWORD) { return SetEvent(EndEvent()); }

}  // namespace

std::unique_ptr<httplib::Server> NewServer(const TlsFiles& tls) {
  if (!tls.certificate.empty()) throw std::runtime_error("https is not offered on Windows");
  return std::make_unique<httplib::Server>();
}

void KeepPort(socket_t socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes),
             sizeof yes);
}

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  Require(BCryptGenRandom(nullptr, Bytes(bytes), static_cast<ULONG>(count),
                          BCRYPT_USE_SYSTEM_PREFERRED_RNG),
          "the system gives no random bytes");
  return bytes;
}

std::string HmacSha256(const std::string& key, const std::string& text) {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  Require(BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr,
                                      BCRYPT_ALG_HANDLE_HMAC_FLAG),
          "the system has no SHA-256");
  std::string digest(DigestBytes, '\0');
  const NTSTATUS status =
      BCryptHash(algorithm, Bytes(key), static_cast<ULONG>(key.size()), Bytes(text),
                 static_cast<ULONG>(text.size()), Bytes(digest), DigestBytes);
  BCryptCloseAlgorithmProvider(algorithm, 0);
  Require(status, "the system does not sign");
  return digest;
}

std::string Base64Encode(const std::string& bytes) {
  DWORD length = static_cast<DWORD>(bytes.size() * 4 / 3 + 8);
  std::string text(length, '\0');
  const bool isDone = CryptBinaryToStringA(Bytes(bytes), static_cast<DWORD>(bytes.size()),
                                           CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, text.data(),
                                           &length) != FALSE;
  text.resize(isDone ? length : 0);
  return text;
}

std::string Base64Decode(const std::string& text) {
  DWORD length = static_cast<DWORD>(text.size());
  std::string bytes(length, '\0');
  const bool isDone =
      CryptStringToBinaryA(text.data(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64,
                           Bytes(bytes), &length, nullptr, nullptr) != FALSE;
  bytes.resize(isDone ? length : 0);
  return bytes;
}

std::tm Utc(std::time_t time) {
  std::tm parts{};
  gmtime_s(&parts, &time);
  return parts;
}

EndWatch::EndWatch() { SetConsoleCtrlHandler(&OnControl, TRUE); }

void EndWatch::Wait() { WaitForSingleObject(EndEvent(), INFINITE); }

}  // namespace cloudsim
