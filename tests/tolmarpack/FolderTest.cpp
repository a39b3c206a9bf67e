#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string_view>

#include "reference_host/package/CabinetMember.h"
#include "tests/tolmarpack/Sample.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/tolmarpack/Cabinet.h"
#include "tools/tolmarpack/Options.h"
#include "tools/tolmarpack/Publish.h"

using namespace tolmarpack;
namespace fs = std::filesystem;

namespace {

using Spoil = std::function<void(const Sample&)>;

struct Row {
  const char* rule;  ///< empty: nothing is to be found
  const char* file;
  std::string text;  ///< behind what the file has, or instead of it
  bool isInstead = false;
};

/// @return the bytes of a file in UTF-16.
std::string Wide(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

const Row Rows[] = {
    {"manifest", ManifestName, "{", true},
    {"manifest", ManifestName, R"({"title": "T", "name": "N", "module": "M"})", true},
    {"manifest", ManifestName, R"({"title":"T/","name":"N","module":"M","description":"D"})", true},
    {"manifest", ManifestName, R"({"title":"T","name":"N","module":"M","description":"D","x":1})",
     true},
    {"manifest", ManifestName,
     R"({"title":"T","name":"N","module":"M","description":"D","files":["none.txt"]})", true},
    {"installer-command", InstallerName, "exit 0\n", true},
    {"installer-command", InstallerName, "param([string]$what)\n$command = 'x'\n", true},
    {"", InstallerName, "<# first #>\nParam(\n  [int]$n,\n  $Command)\nexit 0\n", true},
    {"", InstallerName, "# alone\nparam([string]$command)\n", true},
    {"check-several", "check-sample-2.ps1", "exit 1\n"},
    {"check-name", Check, "", true},  // renamed, see below
    {"check-always", Check, "exit 0\n", true},
    {"check-always", Check, "if (Test-Path 'C:\\x') { exit 0 }\n", true},
    {"check-always", Check, "exit 0\nexit 1\n", true},
    {"", Check, "if (Test-Path 'C:\\x') { exit 0 }\nexit 1\n", true},
    {"", Check, "if (-not (Test-Path 'C:\\x')) { throw 'no' }\n", true},
    {"interactive", InstallerName, "Read-Host 'Name'\n"},
    {"interactive", InstallerName, "[Console]::ReadKey() | Out-Null\n"},
    {"interactive", InstallerName, "& \"$env:windir\\system32\\msiexec.exe\" /i setup.msi\n"},
    {"", InstallerName, "& msiexec.exe /i setup.msi /qn\n"},
    {"restart", InstallerName, "Restart-Computer -Force\n"},
    {"restart", InstallerName, "& \"$env:windir\\system32\\shutdown.exe\" /r /t 0\n"},
    {"restart", InstallerName, "& msiexec.exe /i setup.msi /qn /forcerestart\n"},
    {"", InstallerName, "# Read-Host\n'Restart-Computer, pause'\n<#\npause\n#>\n@'\npause\n'@\n"},
    {"restart", InstallerName,
     Wide(u"\uFEFF# \u00FC\nparam($command)\n'\U0001F600'\nRestart-Computer\n"), true},
    {"encoding", InstallerName, "# \xC3\xBC\n"},
    {"download-path", InstallerName,
     "New-Service -Name x -BinaryPathName \"$PSScriptRoot\\x.exe\"\n"},
    {"download-path", InstallerName, "Copy-Item 'C:\\ProgramData\\Tolmar\\Downloads\\x' 'C:\\'\n"},
    {"download-path", Check, "if (Test-Path \"$PSScriptRoot\\x\") { exit 0 }\n"},
    {"syntax", InstallerName, "if (Test-Path x { exit 0 }\n"},
};

LintReport LintOf(const Sample& sample) { return Lint({sample.folder}, {}); }

}  // namespace

std::set<std::string> DocumentedRules() {
  std::istringstream lines(ReadFile(fs::path(TOLMAR_DOCS) / "packages.md"));
  std::set<std::string> rules;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("### ")) rules.insert(line.substr(4));
  }
  return rules;
}

TEST(Folder, EachMistakeIsFoundUnderItsRule) {
  for (const Row& row : Rows) {
    const Sample sample;
    const bool isRenamed = std::string(row.rule) == "check-name";
    if (isRenamed) {
      fs::rename(sample.folder / Check, sample.folder / "check.ps1");
    } else {
      row.isInstead || !fs::exists(sample.folder / row.file) ? sample.Write(row.file, row.text)
                                                             : sample.Append(row.file, row.text);
    }
    const LintReport report = LintOf(sample);
    std::set<std::string> expected;
    if (*row.rule != '\0') expected.insert(row.rule);
    if (!report.unchecked.empty()) expected.erase("syntax");  // Told, where there is no parser.
    EXPECT_EQ(RulesIn(report), expected) << row.rule << ": " << row.text;
  }
}

TEST(Folder, WhatIsMissingTooLargeOrSharedIsFound) {
  const std::pair<const char*, Spoil> rows[] = {
      {"manifest", [](const Sample& s) { fs::remove(s.folder / ManifestName); }},
      {"installer-missing", [](const Sample& s) { fs::remove(s.folder / InstallerName); }},
      {"check-missing", [](const Sample& s) { fs::remove(s.folder / Check); }},
      {"too-large",
       [](const Sample& s) { fs::resize_file(s.folder / "payload" / "hello.txt", 1ull << 31); }},
  };
  for (const auto& [rule, spoil] : rows) {
    const Sample sample;
    spoil(sample);
    EXPECT_EQ(RulesIn(LintOf(sample)), std::set<std::string>{rule});
  }
  const Sample one, other;
  EXPECT_EQ(RulesIn(Lint({one.folder, other.folder}, {})), std::set<std::string>{"name-shared"});
}

TEST(Folder, EachRuleHasItsSection) {
  std::set<std::string> ids;
  for (const Rule& rule : AllRules()) ids.insert(rule.id);
  EXPECT_EQ(DocumentedRules(), ids);
}

TEST(Folder, BadNamesAreNoPackages) {
  const TemporaryFolder home;
  for (const char* name : {"a b", "aux", "a.", "x'y", ""}) {
    EXPECT_THROW(MakeFolder(home.Path() / name), std::invalid_argument) << name;
  }
  EXPECT_THROW(BuildPackage(ReadFolder(home.Path()), home.Path() / "x.cab"), std::runtime_error);
  EXPECT_TRUE(fs::is_empty(home.Path()));
}

TEST(Folder, TheSameFilesMakeTheSameCabinet) {
  const Sample sample, other;
  const std::string noise = RandomText(100'000);  // several blocks
  for (const Sample* each : {&sample, &other}) {
    each->Write("payload/noise.txt", noise);
    each->Write("payload/deep/\xC3\xBC.txt", "beyond ASCII\n");
  }
  fs::last_write_time(other.folder / InstallerName,
                      fs::file_time_type::clock::now() - std::chrono::hours(24 * 365));
  BuildPackage(ReadFolder(sample.folder), sample.home.Path() / "out.cab");
  BuildPackage(ReadFolder(other.folder), other.home.Path() / "out.cab");
  const std::string bytes = ReadFile(sample.home.Path() / "out.cab");
  EXPECT_TRUE(bytes == ReadFile(other.home.Path() / "out.cab"));
  EXPECT_LT(bytes.size(), noise.size());
  Options options;  // Words of the command line are UTF-8, whatever the PC's code page.
  int status = 0;
  const fs::path beyond = sample.folder / PathOf("payload/deep/\xC3\xBC.txt");
  EXPECT_TRUE(ReadOptions({"lint", TextOf(beyond)}, options, status));
  const TemporaryFolder unpacked;
  UnpackCabinet(sample.home.Path() / "out.cab", unpacked.Path());
  EXPECT_EQ(ReadFile(unpacked.Path() / "payload" / "noise.txt"), noise);
  EXPECT_EQ(ReadFile(unpacked.Path() / PathOf("payload/deep/\xC3\xBC.txt")), "beyond ASCII\n");
}

TEST(Folder, ACatalogueHoldsTheModulesOfATitleAndKeepsWhatItHad) {
  const Sample first;
  const fs::path second = first.home.Path() / "second";
  MakeFolder(second);
  WriteFile(second / ManifestName, R"({"title": "T-SAMPLE", "name": "sample", "module": "M-SECOND",
    "description": "more", "files": ["notes.txt"]})");
  const std::string notes = "notes\n\x1A\r\n";  // None of it is the system's affair.
  WriteFile(second / "notes.txt", notes);
  const fs::path catalogue = first.home.Path() / "cloud" / "catalogue.json";
  WriteFile(catalogue, R"({"sessionToken": "kept", "titles": ["gone"]})");
  const auto published = Publish({first.folder, second}, catalogue, {});
  Json::Value root;
  ASSERT_EQ(cloudsim::ParseStrict(ReadFile(catalogue), root), "");
  EXPECT_EQ(root["sessionToken"].asString(), "kept");
  ASSERT_EQ(root["titles"].size(), 1U);
  const Json::Value& modules = root["titles"][0]["modules"];
  ASSERT_EQ(modules.size(), 2U);
  EXPECT_EQ(cloudsim::CompactText(modules[1]),
            R"({"files":["second/notes.txt","second/second.cab","second/check-second.ps1"],)"
            R"("moduleFruPn":"M-SECOND"})");
  for (const Published& module : published) {
    for (const std::string& file : module.files) {
      EXPECT_TRUE(fs::exists(catalogue.parent_path() / file)) << file;
    }
  }
  EXPECT_EQ(ReadFile(catalogue.parent_path() / "second" / "notes.txt"), notes);
  const std::string before = ReadFile(catalogue);
  EXPECT_THROW(Publish({second, second}, catalogue, {}), std::runtime_error);
  EXPECT_EQ(ReadFile(catalogue), before);
}
