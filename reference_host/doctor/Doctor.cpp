#include "reference_host/doctor/Doctor.h"

#include <exception>

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/doctor/MachineChecks.h"
#include "reference_host/doctor/PowerShellCheck.h"
#include "reference_host/doctor/ProxyCheck.h"
#include "reference_host/doctor/Questions.h"
#include "reference_host/doctor/ServiceChecks.h"
#include "reference_host/log/SuiteLog.h"

namespace refhost {

namespace {

struct Check {
  const char* id;
  bool needsConfiguration;
  Finding (*examine)(const Questions&);
};

Finding ExamineConfiguration(const Questions&) {
  if (GetConfiguration() != nullptr) {
    return {"", Health::Ok, ZLT::String::UTF16ToUTF8(ConfigurationOrigin()), ""};
  }
  return {"", Health::Fail, ZLT::String::UTF16ToUTF8(ConfigurationError()),
          "Name a file by --config or TOLMAR_HOST_CONFIG; docs/operations.md lists its keys."};
}

constexpr Check Checks[] = {{"configuration", false, ExamineConfiguration},
                            {"download-folder", true, ExamineDownloadFolder},
                            {"log-folder", true, ExamineLogFolder},
                            {"registered", true, ExamineRegistration},
                            {"endpoint", true, ExamineEndpoint},
                            {"token", true, ExamineToken},
                            {"clock", true, ExamineClock},
                            {"bits", false, ExamineBits},
                            {"powershell", false, ExaminePowerShell},
                            {"proxy", false, ExamineProxy},
                            {"free-space", true, ExamineSpace},
                            {"lease", false, ExamineLease}};

Finding Run(const Check& check, const Questions& questions) try {
  if (check.needsConfiguration && GetConfiguration() == nullptr) {
    return {"", Health::Skipped, "not examined: it needs the configuration", ""};
  }
  return check.examine(questions);
} catch (const std::exception& exception) {
  return {"", Health::Fail, std::string("could not be examined: ") + exception.what(), ""};
}

}  // namespace

std::vector<Finding> Examine(std::chrono::milliseconds patience) {
  KeepSuiteLogClosed();
  const Questions questions(patience);
  std::vector<Finding> findings;
  for (const Check& check : Checks) {
    findings.push_back(Run(check, questions));
    findings.back().id = check.id;
  }
  return findings;
}

}  // namespace refhost
