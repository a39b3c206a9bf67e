#pragma once

#include <json/value.h>

#include <string>

namespace c_interface {

/// @return a host's text. @throws Refusal when it is null or no UTF-8.
std::string Utf8(const char* text);
std::wstring Wide(const char* text);

/// @return a host's document with a list of titles: what the agent would stumble over on its way is
/// refused before, since an installation that ends so keeps its lock for good. @throws Refusal.
Json::Value Titles(const char* json);

/// @param text in. @param out out, a copy of it for the host, to be freed by `tolmar_free`.
void Hand(const std::string& text, char** out);

/// The same with a document. A null, which the agent has not filled, leaves `out` as it is.
void Hand(const Json::Value& document, char** out);

}  // namespace c_interface
