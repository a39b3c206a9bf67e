#pragma once

#include <json/value.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

/// Ends the program, which is what a fuzzer takes for a finding, when a property does not hold.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

/// What the fuzzer hands to every target.
struct Input {
  const std::uint8_t* data;
  std::size_t size;

  /// @return all that is left, as text.
  std::string Text() const { return {reinterpret_cast<const char*>(data), size}; }
  /// @return all that is left, in UTF-16 code units, the low byte first.
  std::wstring Wide() const;
  /// @return all that is left, in the digits of a JSON Web Token.
  std::string Base64Url() const;
  /// Takes a number from the front, the low byte first. @return 0 when too little is left.
  template <class Number>
  Number Take() {
    std::make_unsigned_t<Number> number = 0;
    if (size < sizeof number) return 0;
    for (std::size_t i = sizeof number; i-- > 0;) {
      number = static_cast<decltype(number)>(number << 8 | data[i]);
    }
    data += sizeof number;
    size -= sizeof number;
    return static_cast<Number>(number);
  }
};

/// @return true when `text` is JSON (NaN and infinities are allowed, as a host may hand them in).
bool ReadJson(const std::string& text, Json::Value& root);

/// Reads a document of the host. @return false when it is no JSON, or has more titles than one run
/// should start threads for.
bool ReadDocument(const std::string& text, Json::Value& document);

/// @return the document as text, without what the agent may write into it: "status" and "progress"
/// of its titles, and the object that a title without anything becomes.
std::string Bare(Json::Value document);
