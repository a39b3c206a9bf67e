#pragma once

#include <json/value.h>

#include <string>

#include "host/common/Text.h"

/// Read access that never inserts: jsoncpp's writable `operator[]` adds a null member where none
/// is.
/// @return the member, or null when `object` is null or has none. @throws Json::Exception when it
/// is no object.
inline const Json::Value& Member(const Json::Value& object, const char* key) { return object[key]; }

/// Takes a member out of a document that nobody needs any more: documents are large, copies slow.
/// @return the member, null when there is none. @throws Json::Exception as `Member` does.
inline Json::Value Taken(Json::Value& object, const char* key) {
  Json::Value taken;
  if (!Member(object, key).isNull()) object.removeMember(key, &taken);
  return taken;
}

/// @return a JSON text as a wide string. @throws Json::Exception when `value` has no text form.
inline std::wstring WideText(const Json::Value& value) {
  return ZLT::String::UTF8ToUTF16(value.asString());
}

/// Parses JSON text, with jsoncpp's defaults.
/// @return false when it is no JSON. @throws Json::Exception when it is nested too deeply.
bool ParseJson(const std::wstring& text, Json::Value& root);

/// @return true when the "code" of a reply's result is the integer 0. @throws Json::Exception when
/// it is no object.
inline bool HasSuccessCode(const Json::Value& result) {
  return Member(result, "code") == Json::Value(0);
}
