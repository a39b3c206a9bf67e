#include "tools/tolmarhost/Notices.h"

#include <string>
#include <vector>

#include "host/common/Text.h"
#include "messages.h"
#include "reference_host/causes/Causes.h"

namespace {

using service::Notice;
using Texts = std::vector<std::wstring>;

/// @return the cause by its identifier, or else by the code; null when nobody has described it.
const refhost::Cause* CauseOf(const Notice& notice) {
  return notice.cause.empty() ? refhost::CauseOfCode(notice.code)
                              : refhost::FindCause(notice.cause);
}

std::wstring Wide(const std::string& text) { return ZLT::String::UTF8ToUTF16(text); }

/// %2 to %5 of the messages about a failure.
Texts FailureTexts(const Notice& notice) {
  const refhost::Cause* cause = CauseOf(notice);
  const std::string id = cause != nullptr ? cause->id : "unknown";
  const std::string happened = cause != nullptr ? cause->happened : "";
  const std::string remedy = cause != nullptr ? cause->remedy : "";
  const std::string why = notice.text.empty() ? happened : happened + " " + notice.text;
  return {Wide(notice.title), Wide(id), std::to_wstring(notice.code), Wide(why), Wide(remedy)};
}

}  // namespace

void Write(const EventLog& log, const Notice& notice) {
  Texts texts = FailureTexts(notice);
  switch (notice.kind) {
    case Notice::Kind::AskingFailed:
      return log.Write(MSG_ASKING_FAILED, {texts[1], texts[2], texts[3] + L" " + texts[4]});
    case Notice::Kind::Installed:
      return log.Write(MSG_INSTALLED, {texts[0]});
    case Notice::Kind::Failed:
      return log.Write(MSG_FAILED, texts);
    case Notice::Kind::Refused:
      return log.Write(MSG_REFUSED, texts);
    case Notice::Kind::GivenUp:
      texts[3] = Wide(notice.text);
      return log.Write(MSG_GIVEN_UP, texts);
    case Notice::Kind::Deferred:
      return log.Write(MSG_DEFERRED, {Wide(notice.text)});
    case Notice::Kind::OutsideWindow:
      return log.Write(MSG_OUTSIDE_WINDOW, {Wide(notice.text)});
  }
}
