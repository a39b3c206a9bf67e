#pragma once

#include <string>

namespace cloudsim {

/// @return 32 bytes from the system's random source. @throws std::runtime_error when it has none.
std::string RandomKey();

/// @return HMAC-SHA256 of `text` under `key`, as base64url without padding (43 characters).
std::string Sign(const std::string& key, const std::string& text);

/// Compares in a time that does not tell where the texts differ.
bool IsSame(const std::string& a, const std::string& b);

std::string Base64UrlEncode(const std::string& bytes);

/// @param text in, the output of Base64UrlEncode.
std::string Base64UrlDecode(const std::string& text);

}  // namespace cloudsim
