#include "tools/tolmarctl/Doctor.h"

#include <algorithm>
#include <cstdio>

#include "reference_host/doctor/Doctor.h"
#include "tools/common/Console.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Table.h"

namespace {

using refhost::Finding;
using refhost::Health;

Cell StatusCell(Health health) {
  switch (health) {
    case Health::Ok:
      return {"ok", Cell::Look::Good};
    case Health::Warn:
      return {"warn"};
    case Health::Fail:
      return {"fail", Cell::Look::Bad};
    case Health::Skipped:
      break;
  }
  return {"skipped"};
}

void PrintJson(const std::vector<Finding>& findings) {
  Json::Value root;
  root["command"] = "doctor";
  for (const Finding& finding : findings) {
    Json::Value& check = root["checks"].append(Json::objectValue);
    check["id"] = finding.id;
    check["status"] = StatusCell(finding.health).text;
    check["found"] = finding.found;
    check["remedy"] = finding.remedy;
  }
  PrintJsonLine(root);
}

Table TableOf(const std::vector<Finding>& findings) {
  Table table({"STATUS", "CHECK", "FOUND"});
  for (const Finding& finding : findings) {
    const std::string remedy = finding.remedy.empty() ? "" : "  do: " + finding.remedy;
    table.Add({StatusCell(finding.health), {finding.id}, {finding.found + remedy}});
  }
  return table;
}

void PrintText(const std::vector<Finding>& findings) {
  const Console console;
  std::fputs(TableOf(findings).Text(console.HasColour()).c_str(), stdout);
}

}  // namespace

std::string DoctorsLines() { return TableOf(refhost::Examine()).Text(false); }

int Doctor(const Options& options) {
  const std::vector<Finding> findings = refhost::Examine();
  options.json ? PrintJson(findings) : PrintText(findings);
  const bool failed = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.health == Health::Fail;
  });
  return failed ? ExitStatus::Failure : ExitStatus::Success;
}
