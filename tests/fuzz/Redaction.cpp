// No text around a signed URL or a token brings its secret into a log.

#include "reference_host/log/Redaction.h"

#include "host/common/Text.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{data, size};
  const std::size_t length = std::min<std::size_t>(input.Take<std::uint8_t>(), input.size);
  const std::wstring before = ZLT::String::UTF8ToUTF16(Input{input.data, length}.Text());
  const std::wstring after = ZLT::String::UTF8ToUTF16(input.Text().substr(length));
  refhost::WithoutSecrets(before + after);
  for (const wchar_t* secret :
       {L"https://h/f?signature=S3CRET", L"(https://h/f(1)?n='(2)'&signature=S3CRET)",
        L" eyJhIjox.S3CRET.c2ln"}) {
    const std::wstring shown = refhost::WithoutSecrets(before + secret + after);
    const bool own =
        before.find(L"S3CRET") != std::wstring::npos || after.find(L"S3CRET") != std::wstring::npos;
    Require(own || shown.find(L"S3CRET") == std::wstring::npos, "the secret is left out");
  }
  return 0;
}
