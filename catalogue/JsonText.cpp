#include "catalogue/JsonText.h"

#include <json/reader.h>

#include <memory>

bool ParseJson(const std::wstring& text, Json::Value& root) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  if (!reader) return false;
  const std::string utf8 = ZLT::String::UTF16ToUTF8(text);
  std::string errors;
  return reader->parse(utf8.data(), utf8.data() + utf8.size(), &root, &errors);
}
