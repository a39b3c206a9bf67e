#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "tests/scriptrunner/ScriptFolder.h"
#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/Run.h"
#include "tools/scriptrunner/System.h"

using namespace scriptrunner;

namespace {

/// Writes down what a script does besides files; programs give 7 and "missing.exe" does not start.
class FakeSystem : public System {
 public:
  std::optional<std::string> Environment(const std::string& name) override {
    if (name == "ProgramFiles(x86)") return "P86";
    return name == "TEMP" ? std::optional<std::string>("T") : std::nullopt;
  }
  void Sleep(std::chrono::milliseconds duration) override {
    output += "<sleep " + std::to_string(duration.count()) + ">";
  }
  int RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                 bool discardOutput) override {
    if (program == "missing.exe") throw CommandFailure("cannot start it");
    output += "<run " + program;
    for (const std::string& argument : arguments) output += " [" + argument + "]";
    output += discardOutput ? " quietly>" : ">";
    return 7;
  }
  void Write(const std::string& line) override { output += line + "\n"; }
  void WriteError(const std::string& line) override { error += line + "\n"; }

  std::string output, error;
};

class Scripts : public testing::Test {
 protected:
  Scripts()
      : _folder(std::filesystem::temp_directory_path() /
                ("scripts-" + std::to_string(std::random_device()()))) {}

  void Clear() {
    _folder.Clear();
    system = FakeSystem();
  }

  int Run(const std::string& text, const std::vector<std::string>& arguments = {}) {
    _folder.Put("test.ps1", text);
    return RunScript({_folder.Script().string(), arguments}, system);
  }

  FakeSystem system;
  ScriptFolder _folder;
};

}  // namespace

TEST_F(Scripts, ComputeAndPrint) {
  for (const ScriptCases::Computing& row : ScriptCases::computing) {
    Clear();
    EXPECT_EQ(Run(row.text, row.arguments), row.code) << row.text << "\n" << system.error;
    EXPECT_EQ(system.output, row.output) << row.text;
  }
}

TEST_F(Scripts, UseTheSystem) {
  const struct {
    const char *text, *output;
    int code = 0;
  } rows[] = {
      {"\"$env:TEMP|${env:ProgramFiles(x86)}|$env:NONE|5$\"", "T|P86||5$\n"},
      {"Start-Sleep -Milliseconds 20; Start-Sleep 2", "<sleep 20><sleep 2000>"},
      {"$p='a b'\n& \"$p.exe\" -x --y=$p 'c d' `\n  e\nexit $LASTEXITCODE",
       "<run a b.exe [-x] [--y=a b] [c d] [e]>", 7},
      {"& x.exe | Out-Null\nWrite-Output hidden | out-null", "<run x.exe quietly>"},
  };
  for (const auto& row : rows) {
    Clear();
    EXPECT_EQ(Run(row.text), row.code) << row.text << "\n" << system.error;
    EXPECT_EQ(system.output, row.output) << row.text;
  }
}

TEST_F(Scripts, WorkOnFiles) {
  for (const ScriptCases::OnFiles& row : ScriptCases::onFiles) {
    Clear();
    ScriptCases::Files after = ScriptCases::before;
    for (const auto& [name, bytes] : after) _folder.Put(name, bytes);
    for (const auto& [name, bytes] : row.changed) after[name] = bytes;
    for (const std::string& name : row.removed) after.erase(name);
    EXPECT_EQ(Run("$r = $PSScriptRoot\n" + row.text), 0) << row.text << system.error;
    EXPECT_EQ(_folder.Found(), after) << row.text;
    EXPECT_EQ(system.output, row.output) << row.text;
  }
}

TEST_F(Scripts, EndWithOneWhenACommandFails) {
  std::vector<std::string> lines = ScriptCases::failing;
  // PowerShell 7 goes on with the first until the path is too long, and answers the second, as
  // Windows PowerShell does not.
  lines.insert(lines.end(), {"Copy-Item $r\\d $r\\d\\e -Recurse", "Test-Path ''"});
  for (const std::string& line : lines) {
    Clear();
    _folder.Put("d/b", "");
    EXPECT_EQ(Run(ScriptCases::StopsAt(line)), 1) << line;
    EXPECT_NE(system.error.find("test.ps1"), std::string::npos);
    EXPECT_EQ(system.error.find("would go on"), std::string::npos);
    EXPECT_EQ(system.output, "") << line;
  }
  Run("Write-Error 'no'");
  EXPECT_NE(system.error.find("would go on"), std::string::npos) << "PowerShell's default differs";
}

// What is refused is refused before the script's first line runs, unless only a value shows it.
TEST_F(Scripts, OutsideTheSubsetAreRefusedWithTheirLine) {
  // clang-format off
  const char* const refused[] = {
      "Get-Process", "foreach ($i in $x) { }", "function f { }", "$x.Length", "$x[0]", "$x += 1",
      "1 + 1", "'a' -like 'b'", "Copy-Item a b -Filter x", "Copy-Item a, b c", "Copy-Item a b c",
      "Copy-Item -Path a -Path b", "Copy-Item -Destination", "Write-Output a > b", "a.exe x",
      "Write-Output x | Sort-Object", "$x = & a.exe", "if (& a.exe) { }", "& a.exe 2>&1", "@('a')",
      "Write-Output {x}", "[void]$x", "$env:A = 'b'", "$global:x = 1", "$true = 1", "'a' 'b'",
      "Write-Output a`b", "\"`e\"", "\"$$\"", "Test-Path -Path:a", "if $true { }", "exit )", "}",
      "if ($true) { 'x'", "('a'", "'open", "\"open", "<# open", "\"$('a'\"", "1.5", "5x",
      "[CmdletBinding()]", "return", "Write-Output a;&"};
  // clang-format on
  for (const char* line : refused) {
    Clear();
    EXPECT_EQ(Run("'ran'\n$x = 'v'\n" + std::string(line)), ExitCode::Refused) << line;
    EXPECT_NE(system.error.find("test.ps1:3: "), std::string::npos) << line << system.error;
    EXPECT_EQ(system.output, "") << line;
  }
  for (const char* line :
       {"$unset", "\"$x_\"", "$ErrorActionPreference = 'Continue'", "Remove-Item \"$x*\"",
        "New-Item x", "Set-Content x \xC3\xA4", "exit 'x'", "exit 9999999999",
        "Get-Content \"$PSScriptRoot\\test.ps1\"", "Copy-Item $PSScriptRoot y",
        "Remove-Item x -ErrorAction Continue", "Test-Path . -PathType Any2"}) {
    Clear();
    EXPECT_EQ(Run("\xEF\xBB\xBF\n$x = 'v'\n" + std::string(line)), ExitCode::Refused) << line;
    EXPECT_NE(system.error.find("test.ps1:3: "), std::string::npos) << line << system.error;
  }
}

TEST_F(Scripts, AreRefusedForWhatSurroundsThem) {
  EXPECT_EQ(Run("'\xC3\xA4'"), ExitCode::Refused) << "without a mark PowerShell reads it as ANSI";
  EXPECT_EQ(Run(std::string("exit\0 1", 7)), ExitCode::Refused);
  EXPECT_EQ(Run("param($a)", {"-b", "x"}), ExitCode::Refused);
  EXPECT_EQ(Run("param($a)", {"x", "y"}), ExitCode::Refused);
  EXPECT_EQ(Run("param($a)", {"-a"}), ExitCode::CommandFailed);
  EXPECT_EQ(Run("param([int]$a)", {"x"}), ExitCode::CommandFailed);
  EXPECT_EQ(RunScript({_folder.Script().string() + "none", {}}, system), ExitCode::NoScript);
}

TEST(CommandLine, TakesPowerShellsSwitchesInAnySpelling) {
  Invocation invocation;
  EXPECT_EQ(ReadCommandLine({"-ExecutionPolicy", "bypass", "-noprofile", "/NonInteractive",
                             "-WindowStyle", "Hidden", "/f", "C:\\a b.ps1", "-command", "install"},
                            invocation),
            "");
  EXPECT_EQ(invocation.script, "C:\\a b.ps1");
  EXPECT_EQ(invocation.arguments, (std::vector<std::string>{"-command", "install"}));
  EXPECT_EQ(ReadCommandLine({"-FILE", "x"}, invocation), "");
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{},
                                             {"-NoProfile"},
                                             {"-File"},
                                             {"x.ps1"},
                                             {"-Command", "x"},
                                             {"-NoLogo", "-f", "x"},
                                             {"-ExecutionPolicy", "any", "-f", "x"},
                                             {"-WindowStyle", "bypass", "-f", "x"}}) {
    EXPECT_NE(ReadCommandLine(words, invocation), "");
  }
}
