#include "tools/tolmarctl/Doctor.h"

#include <algorithm>
#include <cstdio>

#include "reference_host/doctor/Doctor.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Utf8Console.h"

namespace {

using refhost::Finding;
using refhost::Health;

const char* WordFor(Health health) {
  switch (health) {
    case Health::Ok:
      return "ok";
    case Health::Warn:
      return "warn";
    case Health::Fail:
      return "fail";
    case Health::Skipped:
      break;
  }
  return "skipped";
}

void PrintJson(const std::vector<Finding>& findings) {
  Json::Value list(Json::arrayValue);
  for (const Finding& finding : findings) {
    Json::Value& entry = list.append(Json::objectValue);
    entry["id"] = finding.id;
    entry["status"] = WordFor(finding.health);
    entry["found"] = finding.found;
    entry["remedy"] = finding.remedy;
  }
  PrintJsonLine(list);
}

void PrintText(const std::vector<Finding>& findings) {
  const Utf8Console console;
  for (const Finding& finding : findings) {
    std::printf("%-7s  %-15s  %s%s%s\n", WordFor(finding.health), finding.id.c_str(),
                finding.found.c_str(),
                finding.remedy.empty() ? "" : "  do: ", finding.remedy.c_str());
  }
}

}  // namespace

int Doctor(const Options& options) {
  const std::vector<Finding> findings = refhost::Examine();
  options.json ? PrintJson(findings) : PrintText(findings);
  const bool failed = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.health == Health::Fail;
  });
  return failed ? ExitStatus::Failure : ExitStatus::Success;
}
