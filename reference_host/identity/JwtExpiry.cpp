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

/// @return a time of the token's payload; nothing when it is none.
std::optional<std::int64_t> TimeIn(const Json::Value& payload, const char* claim) {
  const Json::Value& time = payload[claim];
  // A fraction of a second is allowed; a number that no calendar knows is not.
  constexpr double Limit = 1e15;
  if (!time.isNumeric() || time.asDouble() < 0 || time.asDouble() > Limit) return std::nullopt;
  return static_cast<std::int64_t>(time.asDouble());
}

}  // namespace

bool IsJwt(const std::string& jwt) {
  const std::size_t first = jwt.find('.');
  const std::size_t second = jwt.find('.', first + 1);
  return first != 0 && first != std::string::npos && second != std::string::npos &&
         second > first + 1 && std::count(jwt.begin(), jwt.end(), '.') == 2 &&
         std::all_of(jwt.begin(), jwt.end(), [](char c) { return c == '.' || DigitValue(c) >= 0; });
}

std::optional<JwtTimes> TimesOf(const std::string& jwt) {
  if (!IsJwt(jwt)) return std::nullopt;
  const std::size_t first = jwt.find('.') + 1;
  Json::Value payload;
  if (!ReadJson(DecodeBase64Url(jwt.substr(first, jwt.find('.', first) - first)), payload)) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> expiry = TimeIn(payload, "exp");
  if (!expiry) return std::nullopt;
  return JwtTimes{*expiry, TimeIn(payload, "iat")};
}

std::int64_t SecondsLeft(const JwtTimes& times, std::optional<std::int64_t> serverTime,
                         std::int64_t ownTime) {
  if (!times.issued && !serverTime) return times.expiry - ownTime;
  // The later of the two: the token may be older than the exchange that brought it.
  return times.expiry - std::max(times.issued.value_or(0), serverTime.value_or(0));
}

std::string JwtOfReply(const std::string& reply) {
  Json::Value root;
  if (!ReadJson(reply, root) || !root["jwt"].isString()) return {};
  std::string jwt = root["jwt"].asString();
  return IsJwt(jwt) ? jwt : std::string();
}

}  // namespace refhost
