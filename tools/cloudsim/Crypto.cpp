#include "tools/cloudsim/Crypto.h"

#include <algorithm>

#include "tools/cloudsim/Platform.h"

namespace cloudsim {

std::string RandomKey() { return RandomBytes(32); }

std::string Sign(const std::string& key, const std::string& text) {
  return Base64UrlEncode(HmacSha256(key, text));
}

bool IsSame(const std::string& a, const std::string& b) {
  volatile unsigned char differs = a.size() != b.size();
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    differs = static_cast<unsigned char>(differs | (a[i] ^ b[i]));
  }
  return differs == 0;
}

std::string Base64UrlEncode(const std::string& bytes) {
  std::string text = Base64Encode(bytes);
  text.resize((4 * bytes.size() + 2) / 3);  // Without the padding.
  std::replace(text.begin(), text.end(), '+', '-');
  std::replace(text.begin(), text.end(), '/', '_');
  return text;
}

std::string Base64UrlDecode(const std::string& text) {
  std::string padded = text + std::string((4 - text.size() % 4) % 4, '=');
  std::replace(padded.begin(), padded.end(), '-', '+');
  std::replace(padded.begin(), padded.end(), '_', '/');
  std::string bytes = Base64Decode(padded);
  bytes.resize(std::min(bytes.size(), 3 * text.size() / 4));
  return bytes;
}

}  // namespace cloudsim
