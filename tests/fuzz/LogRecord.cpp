// No message can forge a record of the log.

#include "reference_host/log/LogRecord.h"

#include "host/common/Text.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{data, size};
  const auto time = input.Take<std::int64_t>() % 253'402'300'800'000;  // years 0 to 9999, or so
  const std::wstring message =
      size % 2 != 0 ? input.Wide() : ZLT::String::UTF8ToUTF16(input.Text());
  const std::string record = refhost::ComposeLogRecord({time, 12, 34, 'D'}, message);
  Require(record.find(" 12 34 D ") != record.npos && record.ends_with('\n'), "head and end");
  for (std::size_t at = 0; (at = record.find('\n', at)) != record.size() - 1; ++at) {
    Require(record.compare(at + 1, 4, "    ") == 0, "further lines are indented");
  }
  for (const wchar_t c : ZLT::String::UTF8ToUTF16(record)) {
    const bool control = (c < 0x20 && c != L'\t' && c != L'\n') || (c >= 0x7F && c < 0xA0);
    Require(!control && c != 0x2028 && c != 0x2029, "control characters are escaped");
  }
  return 0;
}
