#include "tools/cloudsim/Tokens.h"

#include <json/value.h>

#include <utility>

#include "tools/cloudsim/Crypto.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/UnixTime.h"

namespace cloudsim {
namespace {

constexpr const char* Algorithm = "HS256";

/// @return the object that a token's part holds, null when it holds none.
Json::Value ReadPart(const std::string& part) {
  Json::Value value;
  const bool read = ParseStrict(Base64UrlDecode(part), value).empty() && value.isObject();
  return read ? value : Json::Value();
}

bool IsInForce(const Json::Value& header, const Json::Value& claims) {
  return header["alg"] == Algorithm && claims["exp"].isInt64() &&
         UnixNow() < claims["exp"].asInt64();
}

}  // namespace

Tokens::Tokens(std::string sessionToken, std::string realm, std::chrono::seconds lifetime)
    : _key(RandomKey()),
      _sessionToken(std::move(sessionToken)),
      _realm(std::move(realm)),
      _lifetime(lifetime) {}

bool Tokens::IsSessionToken(const std::string& text) const { return IsSame(text, _sessionToken); }

std::string Tokens::Issue() const {
  Json::Value header;
  header["alg"] = Algorithm;
  header["typ"] = "JWT";
  Json::Value claims;
  claims["iss"] = "cloudsim";
  claims["realm"] = _realm;
  claims["iat"] = static_cast<Json::Int64>(UnixNow());
  claims["exp"] = static_cast<Json::Int64>(UnixNow() + _lifetime.count());
  const std::string text =
      Base64UrlEncode(CompactText(header)) + "." + Base64UrlEncode(CompactText(claims));
  return text + "." + Sign(_key, text);
}

bool Tokens::IsValid(const std::string& jwt) const {
  const std::size_t first = jwt.find('.');
  const std::size_t last = jwt.rfind('.');
  if (first == last) return false;  // Less than three parts.
  const std::string text = jwt.substr(0, last);
  if (!IsSame(jwt.substr(last + 1), Sign(_key, text))) return false;
  return IsInForce(ReadPart(text.substr(0, first)), ReadPart(text.substr(first + 1)));
}

}  // namespace cloudsim
