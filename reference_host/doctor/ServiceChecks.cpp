#include "reference_host/doctor/ServiceChecks.h"

#include "host/common/Text.h"
#include "host/session/Tessary.h"
#include "reference_host/base/Url.h"
#include "reference_host/causes/Causes.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/doctor/Judgement.h"

namespace refhost {

namespace {

/// Says whom the finding is about.
Finding About(const std::string& url, Finding finding) {
  const std::wstring shown = WithoutQuery(ZLT::String::UTF8ToUTF16(url));
  finding.found = ZLT::String::UTF16ToUTF8(shown) + ": " + finding.found;
  return finding;
}

}  // namespace

Finding ExamineEndpoint(const Questions& questions) {
  return About(Settings().baseUrl, JudgeEndpoint(questions.Service().number));
}

Finding ExamineToken(const Questions& questions) {
  return About(Settings().tokenUrl, JudgeToken(questions.Token()));
}

Finding ExamineClock(const Questions& questions) {
  const ServiceAnswer answer = questions.Service();
  if (answer.secondsAhead) return JudgeClock(*answer.secondsAhead);
  return {"", Health::Skipped, "not examined: the service did not tell its time", ""};
}

Finding ExamineRegistration(const Questions&) {
  if (Tessary::GetInstance()->IsRegistered() != 0) return {"", Health::Ok, "yes", ""};
  const Cause& cause = *FindCause("device.unregistered");
  return {"", Health::Fail, cause.happened, cause.remedy};
}

}  // namespace refhost
