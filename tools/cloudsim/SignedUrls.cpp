#include "tools/cloudsim/SignedUrls.h"

#include <cctype>
#include <utility>

#include "tools/cloudsim/Crypto.h"
#include "tools/cloudsim/UnixTime.h"

namespace cloudsim {
namespace {

constexpr std::int64_t ExpiredAgeSeconds = 60;

std::string Encode(const std::string& path) {
  constexpr const char* Digits = "0123456789ABCDEF";
  std::string text;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = byte < 0x80 && (std::isalnum(byte) != 0 || c == '/' || c == '-' ||
                                       c == '.' || c == '_' || c == '~');
    if (plain) {
      text += c;
    } else {
      text.append({'%', Digits[byte >> 4], Digits[byte & 15]});
    }
  }
  return text;
}

}  // namespace

SignedUrls::SignedUrls(std::string base, std::chrono::seconds lifetime)
    : _key(RandomKey()), _base(std::move(base)), _lifetime(lifetime) {}

std::string SignedUrls::Make(const std::string& path, const std::string& device, bool expired) {
  const std::int64_t age = expired ? -ExpiredAgeSeconds : _lifetime.count();
  const std::string expires = std::to_string(UnixNow() + age);
  const std::string signature = SignatureOf(path, device, expires, std::to_string(++_made));
  return _base + Encode(path) + "?expires=" + expires + "&device=" + Encode(device) +
         "&signature=" + signature;
}

bool SignedUrls::IsValid(const std::string& path, const std::string& device,
                         const std::string& expires, const std::string& signature) const {
  const std::string serial = signature.substr(0, signature.find('.'));
  if (!IsSame(signature, SignatureOf(path, device, expires, serial))) return false;
  return UnixNow() < std::stoll(expires);  // A text of our own, now that the signature matches.
}

std::string SignedUrls::SignatureOf(const std::string& path, const std::string& device,
                                    const std::string& expires, const std::string& serial) const {
  return serial + "." + Sign(_key, serial + "\n" + expires + "\n" + path + "\n" + device);
}

}  // namespace cloudsim
