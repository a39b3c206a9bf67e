// The reference host's configuration file.

#include "reference_host/configuration/Layers.h"

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/files/MemberName.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  refhost::Configuration read;
  read.realm = "before";
  const std::string error = refhost::ParseConfiguration("c", Input{data, size}.Text(), read);
  if (!error.empty()) {
    Require(error.starts_with("c: ") && error.find_first_of("\r\n") == error.npos, "one line");
    return Require(read.realm == "before", "untouched on failure"), 0;
  }
  Require(refhost::IsAllowedUrl(ZLT::String::UTF8ToUTF16(read.baseUrl)), "https");
  Require(read.retryWaitScale >= 0 && read.retryWaitScale <= 1, "a share");
  for (const std::wstring& folder : {read.downloadFolder, read.logFolder}) {
    Require(folder.empty() || refhost::RefusalOfMemberName(folder.substr(3)).empty(), "a folder");
  }
  return 0;
}
