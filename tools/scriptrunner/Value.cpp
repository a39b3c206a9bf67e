#include "tools/scriptrunner/Value.h"

#include <charconv>
#include <system_error>

namespace scriptrunner {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::string ToText(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<long long>(&value)) return std::to_string(*number);
  if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "True" : "False";
  return {};
}

bool ToBool(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return !text->empty();
  if (const auto* number = std::get_if<long long>(&value)) return *number != 0;
  if (const auto* truth = std::get_if<bool>(&value)) return *truth;
  return false;
}

std::optional<long long> ToInteger(const Value& value) {
  if (const auto* number = std::get_if<long long>(&value)) return *number;
  if (const auto* truth = std::get_if<bool>(&value)) return *truth ? 1 : 0;
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return {};
  long long number = 0;
  const char* end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, number);
  if (error != std::errc() || stop != end) return {};
  return number;
}

bool AreEqual(const Value& left, const Value& right) {
  const bool leftIsNothing = std::holds_alternative<std::monostate>(left);
  const bool rightIsNothing = std::holds_alternative<std::monostate>(right);
  if (leftIsNothing || rightIsNothing) return leftIsNothing == rightIsNothing;
  if (const auto* truth = std::get_if<bool>(&left)) return *truth == ToBool(right);
  if (const auto* number = std::get_if<long long>(&left)) return ToInteger(right) == *number;
  return Lower(ToText(left)) == Lower(ToText(right));
}

}  // namespace scriptrunner
