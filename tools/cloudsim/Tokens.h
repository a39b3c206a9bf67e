#pragma once

#include <chrono>
#include <string>

namespace cloudsim {

/// Issues and checks the JSON Web Tokens that authorise requests: HS256 under a key that dies with
/// the process. Any thread.
class Tokens {
 public:
  /// @param sessionToken in, what a device must show to be given a token.
  /// @param lifetime in, of each token issued; 0 makes tokens that are expired at once.
  Tokens(std::string sessionToken, std::string realm, std::chrono::seconds lifetime);

  bool IsSessionToken(const std::string& text) const;

  std::string Issue() const;

  /// @return true for a token of this process that has not expired.
  bool IsValid(const std::string& jwt) const;

 private:
  std::string _key;
  std::string _sessionToken;
  std::string _realm;
  std::chrono::seconds _lifetime;
};

}  // namespace cloudsim
