#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/FileCmdlets.h"
#include "tools/scriptrunner/Run.h"
#include "tools/scriptrunner/System.h"

namespace fs = std::filesystem;
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

using Files = std::map<std::string, std::string>;  ///< a name that ends in '/' is an empty folder

class Scripts : public testing::Test {
 protected:
  Scripts()
      : _folder(fs::temp_directory_path() / ("scripts-" + std::to_string(std::random_device()()))) {
    Clear();
  }
  ~Scripts() override { fs::remove_all(_folder); }

  void Clear() {
    fs::remove_all(_folder);
    fs::create_directories(_folder);
    system = FakeSystem();
  }

  void Put(const std::string& name, const std::string& bytes) {
    const fs::path path = _folder / name;
    fs::create_directories(path.parent_path());
    if (!name.ends_with('/')) std::ofstream(path, std::ios::binary) << bytes;
  }

  int Run(const std::string& text, const std::vector<std::string>& arguments = {}) {
    Put("test.ps1", text);
    return RunScript({(_folder / "test.ps1").string(), arguments}, system);
  }

  Files Found() {
    Files files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(_folder)) {
      std::string name = entry.path().lexically_relative(_folder).generic_string();
      if (name == "test.ps1") continue;
      if (entry.is_regular_file()) files[name] = ReadFile(entry.path());
      if (entry.is_directory() && fs::is_empty(entry.path())) files[name + "/"] = "";
    }
    return files;
  }

  FakeSystem system;
  fs::path _folder;
};

}  // namespace

TEST_F(Scripts, ComputeAndPrint) {
  const struct {
    const char *text, *output;
    int code = 0;
    std::vector<std::string> arguments = {};
  } rows[] = {
      {"# c\n<# a\nb #> Write-Output 'it''s' # tail\n'a#b'; 5; $null", "it's\na#b\n5\n"},
      {"$a = 'x'; $B=\"$A-${a}.exe `$a `\"\"\"$(Join-Path 'c\\' '\\d')\"\n$b",
       "x-x.exe $a \"\"c\\d\n"},
      {"\"$env:TEMP|${env:ProgramFiles(x86)}|$env:NONE|5$\"", "T|P86||5$\n"},
      {"$t = $true\nif ($t -and -not ('a' -eq 'b')) { 'yes' } else { 'no' }", "yes\n"},
      {"if ('') { 1 }\nelseif (0) { 2 } elseif (!$null) { 3 }\nelse { 4 }", "3\n"},
      {"if ('A' -eq 'a' -and 1 -eq '1' -and '1' -eq 1 -and 'a' -ne 'b') { exit 3 }", "", 3},
      {"if ($null -eq '' -or $false -eq $null -or 'x' -eq $null) { exit 3 }", ""},
      {"if (5 -eq 'x' -or -not $true -eq $true) { exit 3 }; exit\nexit 4", ""},
      {"exit -1", "", -1},
      {"if ($true) { if ($true) { exit 5 } }; exit 6", "", 5},
      {"Start-Sleep -Milliseconds 20; Start-Sleep 2", "<sleep 20><sleep 2000>"},
      {"$p='a b'\n& \"$p.exe\" -x --y=$p 'c d' `\n  e\nexit $LASTEXITCODE",
       "<run a b.exe [-x] [--y=a b] [c d] [e]>", 7},
      {"& x.exe | Out-Null\nWrite-Output hidden | out-null", "<run x.exe quietly>"},
      {"param([string]$name = 'x', [int]$n, [switch]$on)\n\"$name $n $on\"", "x 0 False\n"},
      {"param(\n $Name = \"$env:TEMP\",\n [int] $n = 4)\n$name; $n",
       "a b\n-5\n",
       0,
       {"-NAME", "a b", "-n", "-5"}},
      {"param([switch]$on, $a, $b)\"$a $b $on\"", "1 2 True\n", 0, {"2", "-a", "1", "-on"}},
      {"'no parameters'", "no parameters\n", 0, {"-command", "install"}},
      {"\xEF\xBB\xBF'\xC3\xA4'\r\nexit 2\r\n", "\xC3\xA4\n", 2},
  };
  for (const auto& row : rows) {
    Clear();
    EXPECT_EQ(Run(row.text, row.arguments), row.code) << row.text << "\n" << system.error;
    EXPECT_EQ(system.output, row.output) << row.text;
  }
}

TEST_F(Scripts, WorkOnFiles) {
  const Files before{{"a.txt", "one\r\n"}, {"d/b.txt", "x\ny"}, {"e/", ""}};
  const struct {
    const char* text;
    Files changed = {};  ///< in `after`, as against before
    std::vector<std::string> removed = {};
    const char* output = "";
  } rows[] = {
      {"Copy-Item $r\\a.txt \"$r\\c.txt\"; Copy-Item -Force -LiteralPath \"$r/a.txt\" -Destination "
       "$r\\d",
       {{"c.txt", "one\r\n"}, {"d/a.txt", "one\r\n"}}},
      {"Copy-Item \"$r\\a.txt\" \"$r\\d\\b.txt\"", {{"d/b.txt", "one\r\n"}}},
      {"Copy-Item $r\\d $r\\e -Recurse; Copy-Item $r\\d $r\\f -Recurse",
       {{"e/d/b.txt", "x\ny"}, {"f/b.txt", "x\ny"}},
       {"e/"}},
      {"Remove-Item $r\\d -Recurse -Force; Remove-Item $r\\e; Remove-Item $r\\a.txt",
       {},
       {"d/b.txt", "e/", "a.txt"}},
      {"New-Item -ItemType Directory -Force $r\\n\\m | Out-Null\nNew-Item -Force -Path $r\\e "
       "-ItemType directory",
       {{"n/m/", ""}}},
      {"New-Item -ItemType File -Force -Path $r\\n\\f; New-Item $r\\a.txt -ItemType file -Force",
       {{"n/f", ""}, {"a.txt", ""}}},
      {"Set-Content -Path $r\\a.txt 'two'; Add-Content $r\\a.txt -Value 3; Add-Content $r\\g 'n' "
       "-NoNewline",
       {{"a.txt", "two\r\n3\r\n"}, {"g", "n"}}},
      {"$x = Get-Content $r\\a.txt; \"[$x]\"; Get-Content -Raw $r\\d\\b.txt",
       {},
       {},
       "[one]\nx\ny\n"},
      {"Test-Path $r\\d; Test-Path $r\\d -PathType Leaf; Test-Path -LiteralPath $r\\a.txt "
       "-PathType leaf; "
       "Test-Path $r\\a.txt -PathType Container; Test-Path $r\\none",
       {},
       {},
       "True\nFalse\nTrue\nFalse\nFalse\n"},
      {"Remove-Item $r\\none -ErrorAction SilentlyContinue; 'on'", {}, {}, "on\n"},
  };
  for (const auto& row : rows) {
    Clear();
    Files after = before;
    for (const auto& [name, bytes] : before) Put(name, bytes);
    for (const auto& [name, bytes] : row.changed) after[name] = bytes;
    for (const std::string& name : row.removed) after.erase(name);
    EXPECT_EQ(Run(std::string("$r = $PSScriptRoot\n") + row.text), 0) << row.text << system.error;
    EXPECT_EQ(Found(), after) << row.text;
    EXPECT_EQ(system.output, row.output) << row.text;
  }
}

TEST_F(Scripts, EndWithOneWhenACommandFails) {
  for (const char* line :
       {"Copy-Item $r\\none $r\\x", "Copy-Item $r\\test.ps1 $r\\no\\x", "Copy-Item $r\\test.ps1 $r",
        "Copy-Item $r\\d $r\\d\\e -Recurse", "Remove-Item $r\\none", "Remove-Item $r\\d",
        "New-Item -ItemType Directory $r\\d", "New-Item $r\\no\\f -ItemType File",
        "Get-Content $r\\none", "Set-Content $r\\d 'x'", "Write-Error 'no'", "Test-Path ''",
        "Test-Path $env:NONE", "Start-Sleep 'x'", "& missing.exe"}) {
    Clear();
    Put("d/b", "");
    EXPECT_EQ(
        Run("$r = $PSScriptRoot; $ErrorActionPreference = 'Stop'\n" + std::string(line) + "\n'on'"),
        1)
        << line;
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
  EXPECT_EQ(RunScript({(_folder / "none.ps1").string(), {}}, system), ExitCode::NoScript);
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
