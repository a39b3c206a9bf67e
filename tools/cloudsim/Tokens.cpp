#include "tools/cloudsim/Tokens.h"

#include <json/value.h>

#include <utility>

#include "tools/cloudsim/Crypto.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/UnixTime.h"

namespace cloudsim {

Tokens::Tokens(std::string sessionToken, std::string realm, std::chrono::seconds lifetime)
    : _key(RandomKey()),
      _sessionToken(std::move(sessionToken)),
      _realm(std::move(realm)),
      _lifetime(lifetime) {}

bool Tokens::IsSessionToken(const std::string& text) const { return IsSame(text, _sessionToken); }

std::string Tokens::Issue() const {
  Json::Value header;
  header["alg"] = "HS256";
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
  const std::size_t last = jwt.rfind('.');
  const std::string text = jwt.substr(0, last);
  if (!IsSame(jwt.substr(last + 1), Sign(_key, text))) return false;
  Json::Value claims;  // Those of Issue, now that the signature matches.
  ParseStrict(Base64UrlDecode(text.substr(text.find('.') + 1)), claims);
  return UnixNow() < claims["exp"].asInt64();
}

}  // namespace cloudsim
