// URLs of the configuration and of the service.

#include "reference_host/base/Url.h"

#include "host/common/Text.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = ZLT::String::UTF8ToUTF16(Input{data, size}.Text());
  const std::wstring shown = refhost::WithoutQuery(text);
  Require(shown.find_first_of(L"?#") == std::wstring::npos, "no query in a log");
  refhost::Url url, again;
  if (!refhost::ParseUrl(text, url)) return Require(!refhost::IsAllowedUrl(text), "refused"), 0;
  const std::wstring composed = (url.secure ? L"https://" : L"http://") + url.host + L":" +
                                std::to_wstring(url.port) + url.pathAndQuery;
  Require(refhost::ParseUrl(composed, again) && again.host == url.host && again.port == url.port &&
              again.pathAndQuery == url.pathAndQuery,
          "the parts make the same URL again");
  Require(refhost::ParseUrl(shown, again) && again.host == url.host, "the host is shown as it is");
  const bool local =
      url.host == L"localhost" || url.host == L"[::1]" || url.host.starts_with(L"127.");
  Require(!refhost::IsAllowedUrl(text) || url.secure || local, "http to this machine only");
  return 0;
}
