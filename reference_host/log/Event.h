#pragma once

#include <json/value.h>

#include <chrono>
#include <concepts>
#include <cstdint>
#include <string>

#include "host/Export.h"

namespace refhost {

/// Name of the events' file in the log folder. A full one becomes NAME.1.
inline constexpr const char* EventFileName = "events.jsonl";

/// One thing that happened, as a line of JSON in the events' file: time, process, run (the same for
/// a process's whole life), title, what happened, and its details (docs/operations.md lists them).
/// Secrets are left out as in the logs, and the file is rotated as they are. Any thread; nothing is
/// thrown, what cannot be written is lost.
class ZLT_API Event {
 public:
  /// @param kind in, what happened to what: "file.done".
  explicit Event(const char* kind);

  /// Adds a detail; texts are UTF-8 or UTF-16, an empty one is left out.
  Event& With(const char* key, const std::string& text);
  Event& With(const char* key, const std::wstring& text);
  Event& With(const char* key, const char* text);
  Event& With(const char* key, std::integral auto number) {
    if constexpr (std::same_as<decltype(number), bool>) {
      return Set(key, number);
    } else {
      return Set(key, static_cast<Json::Int64>(number));
    }
  }

  /// Adds how long it took, in milliseconds ("ms").
  Event& Since(std::chrono::steady_clock::time_point begin);

  /// Appends the line; blocks for the write.
  void Write() const;

  /// @return the identifier of this process's run, as its events have it.
  static const std::string& Run();

 private:
  Event& Set(const char* key, const Json::Value& value);

  Json::Value _record;
};

/// Keeps a copy of the events that this process writes as long as the object lives, whether the
/// disk takes them or not. Any thread.
class ZLT_API EventRecording {
 public:
  EventRecording();
  ~EventRecording();
  EventRecording(const EventRecording&) = delete;
  EventRecording& operator=(const EventRecording&) = delete;

  /// @return the lines so far, as the file has them.
  std::string Lines() const;

 private:
  std::string _lines;
};

/// Names the title that the calling thread works for, in each of that thread's events as long as
/// the object lives. A thread that works for another one takes its name over:
/// `EventTitle(EventTitle::Current())`, the latter on the other.
class ZLT_API EventTitle {
 public:
  /// @param title in, UTF-8; empty: none.
  explicit EventTitle(std::string title);
  ~EventTitle();
  EventTitle(const EventTitle&) = delete;
  EventTitle& operator=(const EventTitle&) = delete;

  /// @return the calling thread's title, empty when it has none.
  static std::string Current();

 private:
  const std::string _title;
  const std::string* const _before;
};

}  // namespace refhost
