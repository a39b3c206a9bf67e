#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>

#include "host/Export.h"

namespace refhost {

/// One thing that happened, as a line of JSON in "events.jsonl" beside the logs: time, process, run
/// (the same for a process's whole life), title, what happened, and its details. Secrets are left
/// out as in the logs, and the file is rotated as they are. Any thread; what cannot be written is
/// lost.
class ZLT_API Event {
 public:
  /// @param kind in, what happened to what: "file.done".
  explicit Event(const char* kind);

  /// Adds a detail; texts are UTF-8 or UTF-16.
  Event& With(const char* key, const std::string& text);
  Event& With(const char* key, const std::wstring& text);
  Event& With(const char* key, const char* text) { return With(key, std::string(text)); }
  Event& With(const char* key, std::int64_t number);
  Event& With(const char* key, bool flag);

  /// Appends the line; blocks for the write.
  void Write() const;

  /// Names the title that is delivered from now on, in every event of this process until another is
  /// named; empty: none.
  static void SetTitle(const std::string& title);

 private:
  Json::Value _record;
};

}  // namespace refhost
