// The service's reply to a report.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  AgentFixture fresh;
  fresh.AnswerAlways("installProgress", Input{data, size}.Text());
  try {
    const unsigned long code =
        fresh.Agent().ReportInstallProgress(L"T", L"M", Installed, L"", L"10:00");
    Require(code == 0 || code == ResultCode::InstallProgressRefused ||
                code == ResultCode::BadDocument || code == ResultCode::InstallProgressFailed ||
                code == ResultCode::RequestException,
            "a code of the report's");
  } catch (const Json::Exception&) {
    // What its contract allows for JSON of the wrong shape.
  }
  Require(fresh.Host().Count("POST ") == 1, "a report is not retried");
  return 0;
}
