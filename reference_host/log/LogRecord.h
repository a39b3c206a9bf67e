#pragma once

#include <cstdint>
#include <string>

namespace refhost {

/// What stands before the message of a log record.
struct LogRecordHead {
  std::int64_t unixMilliseconds;
  std::uint32_t processId;
  std::uint32_t threadId;
  char level;  ///< 'D' or 'E'
};

/// @return the time in UTC, as "2031-02-03T04:05:06.789Z".
std::string ComposeLogTime(std::int64_t unixMilliseconds);

/// Composes one record of a log, in UTF-8, with its line end:
/// "2031-02-03T04:05:06.789Z 1234 5678 D message". Further lines of the message are indented and
/// control characters are escaped, so no text within a message can pass for a record of its own.
std::string ComposeLogRecord(const LogRecordHead& head, const std::wstring& message);

}  // namespace refhost
