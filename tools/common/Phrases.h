#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>

namespace timeline {

/// One line of the events' file. Nobody vouches for what it holds: a detail of another type than it
/// should have counts as missing. Texts come without control characters but line ends.
class Record {
 public:
  /// @return nothing for what is no JSON object.
  static std::optional<Record> Parse(const std::string& line);

  bool Has(const char* key) const { return _fields.isMember(key); }
  std::string Text(const char* key) const;     ///< empty when it is missing
  std::int64_t Number(const char* key) const;  ///< 0 when it is missing
  bool IsTrue(const char* key) const;
  bool Is(const char* key, const char* text) const { return Text(key) == text; }

 private:
  Json::Value _fields{Json::objectValue};
};

/// @return what an event tells beside its kind and its time, as a phrase for a person; empty when
/// that is nothing.
std::string PhraseOf(const Record& record);

/// @return what a cause (Causes.h) stands for and what to do, two lines that begin with the
/// indentation; empty when nobody has described it.
std::string LinesOfCause(const std::string& id, const std::string& indentation);

/// @return "12 ms", "1.2 s", "3 min 20 s".
std::string Duration(std::int64_t milliseconds);

}  // namespace timeline
