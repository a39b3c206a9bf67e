#include "tests/fuzz/Input.h"

#include <json/reader.h>

#include <memory>

namespace {

constexpr Json::ArrayIndex MaxTitles = 8;

}  // namespace

std::wstring Input::Wide() const {
  std::wstring text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    text += static_cast<wchar_t>(data[i] | data[i + 1] << 8);
  }
  return text;
}

std::string Input::Base64Url() const {
  constexpr const char* Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string text;
  for (std::size_t bit = 0; bit < 8 * size; bit += 6) {
    const int next = bit / 8 + 1 < size ? data[bit / 8 + 1] : 0;
    text += Digits[(data[bit / 8] << 8 | next) >> (10 - bit % 8) & 0x3F];
  }
  return text;
}

bool ReadJson(const std::string& text, Json::Value& root) try {
  Json::CharReaderBuilder builder;
  builder["allowSpecialFloats"] = true;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), &root, nullptr);
} catch (const Json::Exception&) {
  return false;  // nested too deeply
}

bool ReadDocument(const std::string& text, Json::Value& document) {
  if (!ReadJson(text, document)) return false;
  return !document.isObject() || document["swList"].size() <= MaxTitles;
}

std::string Bare(Json::Value document) {
  if (document.isObject() && document.isMember("swList") && document["swList"].isArray()) {
    for (Json::Value& title : document["swList"]) {
      if (title.isNull()) title = Json::Value(Json::objectValue);
      if (!title.isObject()) continue;
      title.removeMember("status");
      title.removeMember("progress");
    }
  }
  return document.toStyledString();
}
