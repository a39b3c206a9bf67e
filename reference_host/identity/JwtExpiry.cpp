#include "reference_host/identity/JwtExpiry.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <memory>

namespace refhost {

namespace {

/// @return the value of a base64url digit, -1 for any other character.
int DigitValue(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '-' ? 62 : c == '_' ? 63 : -1;
}

/// @param text in, base64url digits only.
std::string DecodeBase64Url(const std::string& text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    bits = (bits << 6 | static_cast<std::uint32_t>(DigitValue(c))) & 0xFFFF;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

bool ReadJson(const std::string& text, Json::Value& value) try {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject();
} catch (const Json::Exception&) {
  return false;  // nested too deeply
}

}  // namespace

bool IsJwt(const std::string& jwt) {
  const std::size_t first = jwt.find('.');
  const std::size_t second = jwt.find('.', first + 1);
  return first != 0 && first != std::string::npos && second != std::string::npos &&
         second > first + 1 && std::count(jwt.begin(), jwt.end(), '.') == 2 &&
         std::all_of(jwt.begin(), jwt.end(), [](char c) { return c == '.' || DigitValue(c) >= 0; });
}

std::optional<std::int64_t> JwtExpiry(const std::string& jwt) {
  if (!IsJwt(jwt)) return std::nullopt;
  const std::size_t first = jwt.find('.') + 1;
  Json::Value payload;
  if (!ReadJson(DecodeBase64Url(jwt.substr(first, jwt.find('.', first) - first)), payload)) {
    return std::nullopt;
  }
  const Json::Value& expiry = payload["exp"];
  // A fraction of a second is allowed; a number that no calendar knows is not.
  constexpr double Limit = 1e15;
  if (!expiry.isNumeric() || expiry.asDouble() < 0 || expiry.asDouble() > Limit) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(expiry.asDouble());
}

std::string JwtOfReply(const std::string& reply) {
  Json::Value root;
  if (!ReadJson(reply, root) || !root["jwt"].isString()) return {};
  std::string jwt = root["jwt"].asString();
  return IsJwt(jwt) ? jwt : std::string();
}

}  // namespace refhost
