#include "reference_host/log/LogRecord.h"

#include <gtest/gtest.h>

namespace {

TEST(LogRecord, NoMessageCanForgeARecord) {
  const std::string head = "2001-09-09T01:46:40.007Z 12 34 D ";
  const struct {
    std::wstring message;
    const char* shown;
  } rows[] = {
      {L"plain", "plain\n"},
      {L"", "\n"},
      {L"a\nb\n\nc", "a\n    b\n    \n    c\n"},
      {L"a\r\nb", "a\n    b\n"},
      {L"a\rb", "a\\u000Db\n"},
      {L"a\r", "a\\u000D\n"},
      {std::wstring(L"a\0b", 3), "a\\u0000b\n"},
      {L"\x1B[2J\x7F\u0085\u2028\u2029\v\f",
       "\\u001B[2J\\u007F\\u0085\\u2028\\u2029\\u000B\\u000C\n"},
      {L"tab\t\u00E9", "tab\t\xC3\xA9\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(refhost::ComposeLogRecord({1000000000007, 12, 34, 'D'}, row.message),
              head + row.shown);
  }
}

TEST(LogRecord, ShowsTheTimeWithLeapDays) {
  EXPECT_EQ(refhost::ComposeLogRecord({1709251199999, 1, 2, 'E'}, L"m"),
            "2024-02-29T23:59:59.999Z 1 2 E m\n");
}

}  // namespace
