#include "tools/cloudsim/JsonNode.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace cloudsim {
namespace {

/// The reader's report, which spans lines, as one line.
std::string OneLine(const std::string& report) {
  std::string line;
  for (const char c : report) {
    const bool blank = c == '\n' || c == ' ' || c == '*';
    if (!blank) line += c;
    if (blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

}  // namespace

std::string ParseStrict(const std::string& text, Json::Value& root) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  try {
    std::string errors;
    if (reader->parse(text.data(), text.data() + text.size(), &root, &errors)) return "";
    return errors.empty() ? "not valid JSON" : OneLine(errors);
  } catch (const Json::Exception& error) {  // Nested deeper than the reader goes.
    return error.what();
  }
}

std::string CompactText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

Json::Value ErrorDocument(const std::string& text) {
  Json::Value error;
  error["error"] = text;
  return error;
}

JsonNode::JsonNode(const Json::Value& value, std::string path)
    : _value(&value), _path(std::move(path)) {}

void JsonNode::RequireOnly(std::initializer_list<const char*> keys) const {
  if (!_value->isObject()) Fail("must be an object");
  for (const std::string& name : _value->getMemberNames()) {
    const bool known = std::any_of(keys.begin(), keys.end(), [&](auto key) { return name == key; });
    if (!known) JsonNode(*_value, PathOf(name)).Fail("unknown key");
  }
}

JsonNode JsonNode::At(const std::string& key) const {
  const std::optional<JsonNode> member = Find(key);
  if (!member) JsonNode(*_value, PathOf(key)).Fail("is missing");
  return *member;
}

std::optional<JsonNode> JsonNode::Find(const std::string& key) const {
  if (!_value->isObject()) Fail("must be an object");
  if (!_value->isMember(key)) return std::nullopt;
  return JsonNode((*_value)[key], PathOf(key));
}

std::vector<JsonNode> JsonNode::Items() const {
  if (!_value->isArray()) Fail("must be an array");
  std::vector<JsonNode> items;
  for (Json::ArrayIndex i = 0; i < _value->size(); ++i) {
    items.emplace_back((*_value)[i], _path + "[" + std::to_string(i) + "]");
  }
  return items;
}

std::string JsonNode::Text() const {
  if (!_value->isString() || _value->asString().empty()) Fail("must be a text that is not empty");
  return _value->asString();
}

bool JsonNode::Flag() const {
  if (!_value->isBool()) Fail("must be true or false");
  return _value->asBool();
}

std::int64_t JsonNode::Number(std::int64_t least, std::int64_t most) const {
  const bool fits = _value->isInt64() && _value->asInt64() >= least && _value->asInt64() <= most;
  if (!fits) {
    Fail("must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return _value->asInt64();
}

void JsonNode::Fail(const std::string& what) const {
  throw DocumentError((_path.empty() ? "the document" : _path) + ": " + what);
}

std::string JsonNode::PathOf(const std::string& key) const {
  return _path.empty() ? key : _path + "." + key;
}

}  // namespace cloudsim
