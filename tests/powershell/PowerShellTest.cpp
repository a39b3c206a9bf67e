// Genuine PowerShell in the place where the agent looks for it. ./dev test runs this only where
// there is one.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <future>
#include <iterator>

#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "install/ScriptCommand.h"
#include "tests/host/windows/TestMachine.h"
#include "tests/powershell/Answer.h"

namespace fs = std::filesystem;

namespace {

/// Two at a time: on two processors more take no less.
std::vector<Answer> AskAll(const std::vector<Question>& questions, Program program) {
  std::vector<Answer> answers(questions.size());
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    for (std::size_t i = next++; i < questions.size(); i = next++) {
      answers[i] = Ask(questions[i], program);
    }
  };
  auto other = std::async(std::launch::async, work);
  work();
  other.get();
  return answers;
}

std::string OnOneLine(std::string text) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
    text.replace(at, 1, "\\n");
  }
  return text;
}

void ExpectTheSame(const std::vector<Question>& questions, bool withOutput) {
  const std::vector<Answer> expected = AskAll(questions, Program::PowerShell);
  std::vector<Answer> actual = AskAll(questions, Program::ScriptRunner);
  for (std::size_t i = 0; i < questions.size(); ++i) {
    // Complaints have words of their own.
    if (!withOutput) actual[i].output = expected[i].output;
    EXPECT_EQ(actual[i].code, expected[i].code) << questions[i].text << '\n' << expected[i].output;
    EXPECT_EQ(actual[i].output, expected[i].output) << questions[i].text;
    EXPECT_EQ(actual[i].files, expected[i].files) << questions[i].text;
    std::printf("%s | %ld | %s | %s\n", OnOneLine(questions[i].text).c_str(),
                static_cast<long>(expected[i].code), OnOneLine(expected[i].output).c_str(),
                actual[i] == expected[i] ? "equal" : "different");
  }
}

}  // namespace

TEST(ScriptRunner, AnswersLikePowerShell) {
  const std::string cmd = "$cmd = \"$env:windir\\system32\\cmd.exe\"\n";
  std::vector<Question> questions{
      {"\"$env:windir|${env:ProgramFiles(x86)}|$env:NONE|5$\"; Start-Sleep -Milliseconds 20"},
      {cmd + "'a'; $p = 'b c'\n& $cmd /c echo --y=$p 'c d' `\n  e\n'f'"},
      {cmd + "& $cmd /c exit 7\nexit $LASTEXITCODE"},
      {cmd + "& $cmd /c echo x | Out-Null\nWrite-Output hidden | out-null; $PSScriptRoot -eq ''"},
      {cmd + "& $cmd /c exit 7\n"}};
  for (const auto& row : ScriptCases::computing) questions.push_back({row.text, row.arguments});
  for (const auto& row : ScriptCases::onFiles) {
    questions.push_back({"$r = $PSScriptRoot\n" + row.text, {}, ScriptCases::before});
  }
  ExpectTheSame(questions, true);
}

TEST(ScriptRunner, FailsWherePowerShellFails) {
  std::vector<Question> questions{{"param([int]$a)", {"x"}}};
  std::ranges::transform(ScriptCases::failing, std::back_inserter(questions), [](const auto& line) {
    return Question{ScriptCases::StopsAt(line), {}, {{"d/b", ""}}};
  });
  ExpectTheSame(questions, false);
}

// What docs/operations.md tells of it.
TEST(PowerShell, EndsAndWritesAsMeasured) {
  const struct {
    Question question;
    unsigned long code;
    const char* output;  ///< a part of it
  } rows[] = {
      {{"exit 3010"}, 3010, ""},
      {{"exit -1"}, 0xFFFFFFFF, ""},
      {{"throw 'x'"}, 1, "x"},
      {{"Write-Error 'bad'; 'on'"}, 0, "on"},
      {{"Get-Content C:\\none; 'on'"}, 0, "on"},
      {{"& \"$env:windir\\system32\\cmd.exe\" /c exit 7"}, 0, ""},
      {{"if ("}, 1, "Missing condition"},
      {{"", {}, {}, L"bypass", false}, 64, "not recognized as the name of a script file"},
      {{"\xEF\xBB\xBF'\xC3\xA4\xE2\x82\xAC'"}, 0, "\xC3\xA4?"},
      {{"Read-Host; 'on'"}, 0, "NonInteractive"},
      {{"Get-ExecutionPolicy"}, 0, "Bypass"},
      {{"'on'", {}, {}, L"RemoteSigned"}, 0, "on"},
      {{"'on'", {}, {}, L"AllSigned"}, 1, "cannot be loaded"},
      {{"'on'", {}, {}, L"Restricted"}, 1, "running scripts is disabled"},
  };
  std::vector<Question> questions;
  for (const auto& row : rows) questions.push_back(row.question);
  const std::vector<Answer> answers = AskAll(questions, Program::PowerShell);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    EXPECT_EQ(answers[i].code, rows[i].code) << questions[i].text << '\n' << answers[i].output;
    EXPECT_NE(answers[i].output.find(rows[i].output), std::string::npos) << answers[i].output;
  }
}

namespace {

std::string Check(const std::wstring& line, const fs::path& folder) {
  const int found =
      ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(line, folder, true, nullptr);
  return found != 0 ? "installed, " : "not installed, ";
}

std::string Install(const std::wstring& line, const fs::path& folder) {
  HANDLE process = nullptr;
  DWORD code = 0;
  if (!ZLT::ProcessWrap::CreateProcessInUserSession(line, folder, process, true)) return "no start";
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return std::to_string(code) + ", ";
}

fs::path CheckScriptIn(const fs::path& folder) {
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().starts_with("check")) return entry.path();
  }
  return {};
}

/// What comes of a module's scripts, from their removal of the module to the next one.
std::string LifeOf(const fs::path& module) {
  // Each sign of it means something to one shell or another.
  const fs::path folder = fs::path(TestMachine::Folder()) /
                          (module.filename().wstring() + L" & b; $(exit 1) %TEMP% it's \xFC");
  fs::copy(module, folder, fs::copy_options::recursive);
  const std::wstring check = CheckScriptIn(folder), install = folder / "install.ps1";
  const std::wstring remove = ScriptCommand::Check(install) + L" -command remove";
  std::string life = Install(remove, folder);
  life += Check(ScriptCommand::Check(check), folder);
  life += Install(ScriptCommand::Install(install), folder);
  life += Check(ScriptCommand::CheckAfterInstall(check), folder);
  life += Install(remove, folder);
  return life + Check(ScriptCommand::Check(check), folder);
}

}  // namespace

// TOLMAR_SCRIPTS names a folder with one folder for each module: install.ps1, the check script and
// what is to be installed.
TEST(PowerShell, RunsModulesScriptsByTheAgentsOwnLines) {
  int modules = 0;
  // One after the other: modules of a title share a folder.
  for (const fs::directory_entry& module : fs::directory_iterator(_wgetenv(L"TOLMAR_SCRIPTS"))) {
    EXPECT_EQ(LifeOf(module), "0, not installed, 0, installed, 0, not installed, ")
        << module.path().filename().string();
    ++modules;
  }
  EXPECT_GT(modules, 0);
}
