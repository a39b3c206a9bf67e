#include "tools/cloudsim/Crypto.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <algorithm>
#include <stdexcept>

namespace cloudsim {
namespace {

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

}  // namespace

std::string RandomKey() {
  std::string key(32, '\0');
  if (RAND_bytes(Bytes(key), static_cast<int>(key.size())) != 1) {
    throw std::runtime_error("the system gives no random bytes");
  }
  return key;
}

std::string Sign(const std::string& key, const std::string& text) {
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  unsigned int length = 0;
  HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), Bytes(text), text.size(),
       Bytes(digest), &length);
  digest.resize(length);
  return Base64UrlEncode(digest);
}

bool IsSame(const std::string& a, const std::string& b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

std::string Base64UrlEncode(const std::string& bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()));
  text.resize((4 * bytes.size() + 2) / 3);  // Neither the padding nor the terminator.
  std::replace(text.begin(), text.end(), '+', '-');
  std::replace(text.begin(), text.end(), '/', '_');
  return text;
}

std::string Base64UrlDecode(const std::string& text) {
  std::string padded = text + std::string((4 - text.size() % 4) % 4, '=');
  std::replace(padded.begin(), padded.end(), '-', '+');
  std::replace(padded.begin(), padded.end(), '_', '/');
  std::string bytes(padded.size(), '\0');
  const int length = EVP_DecodeBlock(Bytes(bytes), Bytes(padded), static_cast<int>(padded.size()));
  bytes.resize(length < 0 ? 0 : 3 * text.size() / 4);
  return bytes;
}

}  // namespace cloudsim
