// Text conversion in both directions, compared with the C library's.

#include "host/common/Text.h"

#include <iconv.h>

#include "tests/fuzz/Input.h"

using ZLT::String;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string bytes = Input{data, size}.Text();
  const std::wstring wide = String::UTF8ToUTF16(bytes);
  const std::string clean = String::UTF16ToUTF8(wide);
  static const iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
  std::wstring theirs(size, L'\0');
  char *in = bytes.data(), *out = reinterpret_cast<char*>(theirs.data());
  std::size_t inLeft = size, outLeft = size * sizeof(wchar_t);
  const bool valid = iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  Require(valid == (clean == bytes), "valid text, and no other, comes back as it was");
  Require(!valid || theirs.starts_with(wide), "it is what the C library makes of it");
  Require(String::UTF8ToUTF16(clean) == wide, "what was converted once stays");
  bytes = String::UTF16ToUTF8(Input{data, size}.Wide());
  Require(String::UTF16ToUTF8(String::UTF8ToUTF16(bytes)) == bytes, "always valid UTF-8");
  String::CaseInsesitiveFind(wide, L".ps1");
  return 0;
}
