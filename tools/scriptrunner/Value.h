#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace scriptrunner {

/// What an expression comes to: nothing, a truth value, a whole number or a text (UTF-8).
using Value = std::variant<std::monostate, bool, long long, std::string>;

/// @return the text as it stands in an interpolated string: nothing is empty, truth values are
/// "True" and "False".
std::string ToText(const Value& value);

/// @return false for nothing, 0 and the empty text.
bool ToBool(const Value& value);

/// @return the whole number that the value is or spells; empty when it is none.
std::optional<long long> ToInteger(const Value& value);

/// Compares as -eq does: the right side is taken as the left one's type, texts without regard to
/// (ASCII) case, and nothing equals only nothing.
bool AreEqual(const Value& left, const Value& right);

/// @return the text with its ASCII letters in lower case.
std::string Lower(std::string_view text);

}  // namespace scriptrunner
