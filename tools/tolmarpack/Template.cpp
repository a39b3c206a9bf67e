#include <algorithm>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/files/MemberName.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Package.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

/// Each @ stands for the package's name, each % for the same in capitals.
constexpr char ManifestText[] = R"({
  "title": "T-%",
  "name": "@",
  "module": "M-%",
  "description": "What @ is, in a sentence.",
  "preinstall": false,
  "files": []
}
)";

constexpr char InstallerText[] = R"(# Installs @ for all users; -command remove takes it away again.
# The agent runs it in the unpacked package, with -command install, with nobody there to ask. It does not look at the exit
# code: the check script decides. Running it once more must do no harm.
param(
    [string]$command = 'install'
)
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\@"

if ($command -eq 'install') {
    New-Item -ItemType Directory -Force -Path $folder | Out-Null
    # A line for each file of payload, or the start of an installer that is in it, with the wait for its end.
    Copy-Item -LiteralPath "$PSScriptRoot\payload\hello.txt" -Destination $folder -Force
    # Written last: the check takes @ for installed only when this is there.
    Set-Content -LiteralPath "$folder\version.txt" -Value '1.0.0'
    Write-Output 'Installed @ 1.0.0'
} elseif ($command -eq 'remove') {
    if (Test-Path -LiteralPath $folder) {
        Remove-Item -LiteralPath $folder -Recurse -Force
    }
} else {
    Write-Error "unknown command: $command"
}
)";

constexpr char CheckText[] = R"(# Ends with 0 when this version of @ is installed, else with 1.
# The agent runs it before an installation and after it, from the download folder: it looks at what is installed only, is
# quick, and changes nothing.
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\@"

if (-not (Test-Path -LiteralPath "$folder\version.txt" -PathType Leaf)) {
    exit 1
}
if ((Get-Content -LiteralPath "$folder\version.txt") -ne '1.0.0') {
    exit 1
}
exit 0
)";

std::string Filled(const std::string& text, const std::string& name) {
  std::string capitals = name, filled;
  for (char& c : capitals) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  for (const char c : text) filled += c == '@' ? name : c == '%' ? capitals : std::string(1, c);
  return filled;
}

/// The name stands in scripts, in addresses and in names of files.
void RequireGoodName(const std::string& name) {
  constexpr std::size_t MaxLength = 60;
  const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
  });
  if (!isPlain || name.empty() || name.size() > MaxLength || name.front() == '-') {
    throw std::invalid_argument("a package's name has letters, digits, -, _ and . only, " +
                                std::to_string(MaxLength) + " at most: \"" + name + "\"");
  }
  const std::string refusal = refhost::RefusalOfMemberName(ZLT::String::UTF8ToUTF16(name));
  if (!refusal.empty()) throw std::invalid_argument(name + " would be refused: " + refusal);
}

}  // namespace

void MakeFolder(const fs::path& path) {
  const std::string name =
      TextOf(path.has_filename() ? path.filename() : path.parent_path().filename());
  RequireGoodName(name);
  if (fs::exists(path)) throw std::invalid_argument(TextOf(path) + " is there already");
  WriteFile(path / ManifestName, Filled(ManifestText, name));
  WriteFile(path / InstallerName, Filled(InstallerText, name));
  WriteFile(path / ("check-" + name + ".ps1"), Filled(CheckText, name));
  WriteFile(path / PayloadFolder / "hello.txt", "Replace this by what " + name + " consists of.\n");
}

}  // namespace tolmarpack
