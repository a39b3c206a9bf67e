#include "c_interface/Document.h"

#include <json/reader.h>
#include <json/writer.h>
#include <utf8cpp/utf8.h>

#include <algorithm>
#include <memory>
#include <sstream>

#include "c_interface/Call.h"
#include "catalogue/JsonText.h"
#include "host/common/Text.h"

namespace c_interface {

namespace {

bool IsList(const Json::Value& value) { return value.isNull() || value.isArray(); }

bool HasText(const Json::Value& element, const char* key) {
  return element.isObject() && Member(element, key).isConvertibleTo(Json::stringValue);
}

bool IsTitle(const Json::Value& title) {
  if (!HasText(title, "l1FruPn")) return false;
  if (!Member(title, "preinstallSw").isConvertibleTo(Json::booleanValue)) return false;
  const Json::Value& modules = Member(title, "moduleList");
  return IsList(modules) && std::all_of(modules.begin(), modules.end(), [](const auto& module) {
           return HasText(module, "moduleFruPn");
         });
}

/// @return a host's document. @throws Refusal when it is null, no UTF-8, no JSON or no object.
Json::Value Document(const char* json) {
  const std::string text = Utf8(json);
  Json::CharReaderBuilder strict;
  Json::CharReaderBuilder::strictMode(&strict.settings_);
  const std::unique_ptr<Json::CharReader> reader(strict.newCharReader());
  Json::Value document;
  try {
    if (!reader->parse(text.data(), text.data() + text.size(), &document, nullptr) ||
        !document.isObject()) {
      throw Refusal{TOLMAR_BAD_JSON};
    }
  } catch (const Json::Exception&) {
    throw Refusal{TOLMAR_BAD_JSON};  // nested too deeply
  }
  return document;
}

}  // namespace

std::string Utf8(const char* text) {
  std::string copy = Needed(text);
  if (!utf8::is_valid(copy.begin(), copy.end())) throw Refusal{TOLMAR_BAD_UTF8};
  return copy;
}

std::wstring Wide(const char* text) { return ZLT::String::UTF8ToUTF16(Utf8(text)); }

Json::Value Titles(const char* json) {
  Json::Value document = Document(json);
  const Json::Value& titles = Member(document, "swList");
  if (!IsList(titles) || !std::all_of(titles.begin(), titles.end(), IsTitle)) {
    throw Refusal{TOLMAR_BAD_TITLES};
  }
  return document;
}

void Hand(const std::string& text, char** out) {
  char* const copy = new char[text.size() + 1];
  std::copy_n(text.c_str(), text.size() + 1, copy);
  *out = copy;
}

void Hand(const Json::Value& document, char** out) {
  if (document.isNull()) return;
  Json::StreamWriterBuilder compact;
  compact["indentation"] = "";
  compact["emitUTF8"] = true;
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // Else it ends where memory does, and says nothing.
  const std::unique_ptr<Json::StreamWriter> writer(compact.newStreamWriter());
  writer->write(document, &text);
  Hand(text.str(), out);
}

}  // namespace c_interface
