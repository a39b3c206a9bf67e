#pragma once

#include <string>

/// Composes the JSON text of a request, member by member. Values go in as they stand: the service's
/// part numbers, file names and messages are plain text, and a value with a quote makes a body that
/// the service refuses.
class RequestBody {
 public:
  explicit RequestBody(const wchar_t* type);

  RequestBody& Text(const wchar_t* key, const std::wstring& value);
  RequestBody& Number(const wchar_t* key, int value);

  /// @return the finished body.
  std::wstring Close() const;

 private:
  void Key(const wchar_t* key);

  std::wstring _text;
  bool _first = true;
};
