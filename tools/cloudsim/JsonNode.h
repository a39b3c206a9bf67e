#pragma once

#include <json/value.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace cloudsim {

inline constexpr const char* JsonMediaType = "application/json";

/// A document that cannot be used; the text names the key, as in "titles[0].name: must be a text".
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads JSON text strictly: one value, nothing behind it, no comments, no key twice.
/// @param root out, the value; unspecified on failure.
/// @return an empty text on success, else the first fault in one line.
std::string ParseStrict(const std::string& text, Json::Value& root);

/// @return `value` as text without line breaks.
std::string CompactText(const Json::Value& value);

/// @return {"error":TEXT}, the body of a refusal.
Json::Value ErrorDocument(const std::string& text);

/// One value of a document together with the key path that leads to it. Every reading operation
/// throws DocumentError when the value is not of the asked kind. The value must outlive the node.
class JsonNode {
 public:
  explicit JsonNode(const Json::Value& value, std::string path = "");

  /// Refuses members other than `keys`, so that a misspelt one is not silently ignored.
  void RequireOnly(std::initializer_list<const char*> keys) const;
  JsonNode At(const std::string& key) const;
  std::optional<JsonNode> Find(const std::string& key) const;
  std::vector<JsonNode> Items() const;  ///< the elements of an array
  std::string Text() const;             ///< a text that is not empty
  bool Flag() const;
  std::int64_t Number(std::int64_t least, std::int64_t most) const;

  [[noreturn]] void Fail(const std::string& what) const;

 private:
  std::string PathOf(const std::string& key) const;

  const Json::Value* _value;
  std::string _path;
};

}  // namespace cloudsim
