#pragma once

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Lint.h"
#include "tools/tolmarpack/Package.h"

/// A package that is good until a test spoils it.
struct Sample {
  Sample() { tolmarpack::MakeFolder(folder); }

  void Write(const std::string& name, const std::string& text) const {
    tolmarpack::WriteFile(folder / tolmarpack::PathOf(name), text);
  }
  void Append(const std::string& name, const std::string& text) const {
    Write(name, tolmarpack::ReadFile(folder / name) + text);
  }

  tolmarpack::TemporaryFolder home{};
  std::filesystem::path folder = home.Path() / "sample";
};

inline constexpr char Check[] = "check-sample.ps1";

inline std::set<std::string> RulesIn(const tolmarpack::LintReport& report) {
  std::set<std::string> rules;
  for (const tolmarpack::Finding& finding : report.findings) rules.insert(finding.rule);
  return rules;
}

/// @return the rules that docs/packages.md has a section for.
std::set<std::string> DocumentedRules();
