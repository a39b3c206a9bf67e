#include "tools/tolmarpack/Print.h"

#include <cstdio>
#include <sstream>

#include "host/common/Text.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/common/Phrases.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/Table.h"
#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

namespace {

void PrintText(const std::string& text) { std::fputs(text.c_str(), stdout); }

void PrintJson(const Json::Value& document) { std::puts(cloudsim::CompactText(document).c_str()); }

Cell Bytes(std::uintmax_t bytes) { return {std::to_string(bytes), Cell::Look::Plain, true}; }

Json::Value AsJson(const LintReport& report) {
  Json::Value root;
  root["command"] = "lint";
  root["findings"] = root["unchecked"] = Json::arrayValue;
  for (const Finding& finding : report.findings) {
    Json::Value& entry = root["findings"].append(Json::objectValue);
    entry["rule"] = finding.rule;
    entry["file"] = finding.file;
    entry["line"] = Json::UInt64{finding.line};
    entry["text"] = finding.text;
  }
  for (const std::string& what : report.unchecked) root["unchecked"].append(what);
  return root;
}

std::string MistakeOf(const Finding& finding) {
  for (const Rule& rule : AllRules()) {
    if (finding.rule == rule.id) return rule.mistake;
  }
  return {};
}

std::string LineOf(const Finding& finding) {
  std::string line = Printable(finding.file);
  if (finding.line != 0) line.append(":").append(std::to_string(finding.line));
  line.append(": ").append(finding.rule).append(": ").append(MistakeOf(finding));
  if (!finding.text.empty()) line.append(": ").append(Printable(finding.text));
  return line + "\n";
}

Json::Value AsJson(const std::string& package, const Verdict& verdict) {
  Json::Value root;
  root["command"] = "verify";
  root["package"] = package;
  root["taken"] = verdict.refusal.empty();
  root["reason"] = verdict.refusal;
  root["cause"] = verdict.cause;
  root["signed"] = verdict.signature.present;
  root["publisher"] = verdict.signature.publisher;
  root["thumbprint"] = verdict.signature.thumbprint;
  root["members"] = Json::arrayValue;
  for (const refhost::CabinetMember& member : verdict.members) {
    Json::Value& entry = root["members"].append(Json::objectValue);
    entry["name"] = ZLT::String::UTF16ToUTF8(member.name);
    entry["size"] = Json::UInt64{member.size};
  }
  return root;
}

Json::Value AsJson(const Trial& trial) {
  Json::Value root;
  root["command"] = "test";
  root["title"] = trial.title;
  root["good"] = trial.IsGood();
  root["phases"] = Json::arrayValue;
  for (const Phase& phase : trial.phases) {
    Json::Value& entry = root["phases"].append(Json::objectValue);
    entry["phase"] = phase.name;
    entry["outcome"] = phase.outcome;
    entry["good"] = phase.isGood;
    entry["ms"] = Json::Int64{phase.milliseconds};
    entry["output"] = phase.output;
  }
  return root;
}

void PrintForPeople(const std::string& package, const Verdict& verdict) {
  const bool isTaken = verdict.refusal.empty();
  PrintText(Printable(package) + ": a host would " +
            (isTaken ? "unpack it" : "refuse it: " + Printable(verdict.refusal)) + "\n");
  if (!verdict.signature.thumbprint.empty()) {
    PrintText("  signed by " + Printable(verdict.signature.publisher) + ", thumbprint " +
              verdict.signature.thumbprint + "\n");
  }
  PrintText(timeline::LinesOfCause(verdict.cause, "  "));
  Table table({"MEMBER", "BYTES"});
  for (const refhost::CabinetMember& member : verdict.members) {
    table.Add({{ZLT::String::UTF16ToUTF8(member.name)}, Bytes(member.size)});
  }
  if (!table.IsEmpty()) PrintText(table.Text(false));
}

}  // namespace

bool Print(const Trial& trial, bool asJson) {
  if (asJson) {
    PrintJson(AsJson(trial));
    return trial.IsGood();
  }
  Table table({"PHASE", "OUTCOME", "TIME"});
  for (const Phase& phase : trial.phases) {
    table.Add({{phase.name},
               {phase.outcome.empty() ? "ok" : phase.outcome},
               {timeline::Duration(phase.milliseconds), Cell::Look::Plain, true}});
  }
  PrintText(table.Text(false));
  for (const Phase& phase : trial.phases) {
    if (phase.output.empty()) continue;
    PrintText("the script's output, \"" + phase.name + "\":\n");
    std::istringstream lines(phase.output);
    for (std::string line; std::getline(lines, line);) PrintText("  " + Printable(line) + "\n");
  }
  PrintText(trial.title + (trial.IsGood() ? " installs\n" : " does not pass\n"));
  return trial.IsGood();
}

bool Print(const LintReport& report, bool asJson) {
  if (asJson) {
    PrintJson(AsJson(report));
    return report.findings.empty();
  }
  for (const Finding& finding : report.findings) PrintText(LineOf(finding));
  for (const std::string& what : report.unchecked) {
    std::fprintf(stderr, "not looked at: %s\n", Printable(what).c_str());
  }
  if (report.findings.empty()) {
    PrintText("no mistakes found\n");
  } else {
    PrintText(std::to_string(report.findings.size()) + " found; docs/packages.md tells of each\n");
  }
  return report.findings.empty();
}

bool Print(const std::string& package, const Verdict& verdict, bool asJson) {
  asJson ? PrintJson(AsJson(package, verdict)) : PrintForPeople(package, verdict);
  return verdict.refusal.empty();
}

void Print(const PackageFolder& folder, const std::filesystem::path& cabinet) {
  Table table({"MEMBER", "BYTES"});
  for (const SourceFile& source : folder.sources) {
    table.Add({{source.name}, Bytes(std::filesystem::file_size(source.path))});
  }
  PrintText(table.Text(false) + TextOf(cabinet) + ": " +
            std::to_string(std::filesystem::file_size(cabinet)) + " bytes\n");
}

void Print(const std::vector<Published>& modules, const std::string& catalogue) {
  Table table({"TITLE", "NAME", "MODULE", "FILE"});
  for (const auto& [manifest, files] : modules) {
    for (const std::string& file : files) {
      table.Add({{manifest.title}, {manifest.name}, {manifest.module}, {file}});
    }
  }
  PrintText(table.Text(false) + "serve it: cloudsim --catalogue " + Printable(catalogue) + "\n");
}

}  // namespace tolmarpack
