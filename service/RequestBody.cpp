#include "service/RequestBody.h"

RequestBody::RequestBody(const wchar_t* type) {
  _text.append(L"{\"type\":\"").append(type).append(L"\",\"parameters\": { ");
}

RequestBody& RequestBody::Text(const wchar_t* key, const std::wstring& value) {
  Key(key);
  _text.append(L"\"").append(value).append(L"\"");
  return *this;
}

RequestBody& RequestBody::Number(const wchar_t* key, int value) {
  Key(key);
  _text.append(std::to_wstring(value));
  return *this;
}

std::wstring RequestBody::Close() const { return _text + L"}}"; }

void RequestBody::Key(const wchar_t* key) {
  if (!_first) _text.append(L",");
  _first = false;
  _text.append(L"\"").append(key).append(L"\":");
}
