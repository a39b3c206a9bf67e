#pragma once

#include <map>
#include <string>
#include <vector>

/// Scripts of the subset with what comes of them. The script runner's own tests check it against
/// this table, in both lanes; where there is genuine PowerShell, that runs each of them too and
/// must answer like the runner.
namespace ScriptCases {

using Files = std::map<std::string, std::string>;  ///< a name that ends in '/' is an empty folder

struct Computing {
  std::string text, output;
  int code = 0;
  std::vector<std::string> arguments = {};
};

inline const std::vector<Computing> computing{
    {"# c\n<# a\nb #> Write-Output 'it''s' # tail\n'a#b'; 5; $null", "it's\na#b\n5\n"},
    {"$a = 'x'; $B=\"$A-${a}.exe `$a `\"\"\"$(Join-Path 'c\\' '\\d')\"\n$b",
     "x-x.exe $a \"\"c\\d\n"},
    {"$t = $true\nif ($t -and -not ('a' -eq 'b')) { 'yes' } else { 'no' }", "yes\n"},
    {"if ('') { 1 }\nelseif (0) { 2 } elseif (!$null) { 3 }\nelse { 4 }", "3\n"},
    {"if ('A' -eq 'a' -and 1 -eq '1' -and '1' -eq 1 -and 'a' -ne 'b') { exit 3 }", "", 3},
    {"if ($null -eq '' -or $false -eq $null -or 'x' -eq $null) { exit 3 }", ""},
    {"if (5 -eq 'x' -or -not $true -eq $true) { exit 3 }; exit\nexit 4", ""},
    {"exit -1", "", -1},
    {"if ($true) { if ($true) { exit 5 } }; exit 6", "", 5},
    {"param([string]$name = 'x', [int]$n, [switch]$on)\n\"$name $n $on\"", "x 0 False\n"},
    {"param(\n $Name = \"$env:TEMP\",\n [int] $n = 4)\n$name; $n",
     "a b\n-5\n",
     0,
     {"-NAME", "a b", "-n", "-5"}},
    {"param([switch]$on, $a, $b)\"$a $b $on\"", "1 2 True\n", 0, {"2", "-a", "1", "-on"}},
    {"'no parameters'", "no parameters\n", 0, {"-command", "install"}},
    {"\xEF\xBB\xBF'\xC3\xA4'\r\nexit 2\r\n", "\xC3\xA4\n", 2},
};

/// What lies in the script's folder, `$r` in the rows below.
inline const Files before{{"a.txt", "one\r\n"}, {"d/b.txt", "x\ny"}, {"e/", ""}};

struct OnFiles {
  std::string text;
  Files changed = {};  ///< as against before
  std::vector<std::string> removed = {};
  std::string output = {};
};

inline const std::vector<OnFiles> onFiles{
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
     "-ItemType directory | Out-Null",
     {{"n/m/", ""}}},
    {"New-Item -ItemType File -Force -Path $r\\n\\f | Out-Null\nNew-Item $r\\a.txt -ItemType file "
     "-Force | Out-Null",
     {{"n/f", ""}, {"a.txt", ""}}},
    {"Set-Content -Path $r\\a.txt 'two'; Add-Content $r\\a.txt -Value 3; Add-Content $r\\g 'n' "
     "-NoNewline",
     {{"a.txt", "two\r\n3\r\n"}, {"g", "n"}}},
    {"$x = Get-Content $r\\a.txt; \"[$x]\"; Get-Content -Raw $r\\d\\b.txt",
     {},
     {},
     "[one]\nx\ny\n"},
    {"Test-Path $r\\d; Test-Path $r\\d -PathType Leaf; Test-Path -LiteralPath $r\\a.txt "
     "-PathType leaf; Test-Path $r\\a.txt -PathType Container; Test-Path $r\\none",
     {},
     {},
     "True\nFalse\nTrue\nFalse\nFalse\n"},
    {"Remove-Item $r\\none -ErrorAction SilentlyContinue; 'on'", {}, {}, "on\n"},
};

/// Commands that fail, where the folder `$r\d` holds a file.
inline const std::vector<std::string> failing{"Copy-Item $r\\none $r\\x",
                                              "Copy-Item $r\\test.ps1 $r\\no\\x",
                                              "Copy-Item $r\\test.ps1 $r",
                                              "Remove-Item $r\\none",
                                              "Remove-Item $r\\d",
                                              "New-Item -ItemType Directory $r\\d",
                                              "New-Item $r\\no\\f -ItemType File",
                                              "Get-Content $r\\none",
                                              "Set-Content $r\\d 'x'",
                                              "Write-Error 'no'",
                                              "Test-Path $env:NONE",
                                              "Start-Sleep 'x'",
                                              "& missing.exe"};

/// @return a script in which the command is to be the last that runs.
inline std::string StopsAt(const std::string& command) {
  return "$r = $PSScriptRoot; $ErrorActionPreference = 'Stop'\n" + command + "\n'on'";
}

}  // namespace ScriptCases
