#include "tools/tolmarpack/Syntax.h"

#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

namespace {

/// "Parser.ParseFile Method", Microsoft: nothing of the script is run.
constexpr char ParserScript[] = R"($count = $n = 0
foreach ($file in $args) {
    $faults = $null
    [void][System.Management.Automation.Language.Parser]::ParseFile($file, [ref]$null, [ref]$faults)
    foreach ($fault in $faults) {
        $at = $fault.Extent
        "${n}:$($at.StartLineNumber):$($at.StartColumnNumber): " + ($fault.Message -replace '\s+', ' ')
        $count++
    }
    $n++
}
exit [int]($count -ne 0)
)";

}  // namespace

Ending RunParser(const std::vector<std::string>& files) {
  const TemporaryFolder folder;
  const std::filesystem::path script = folder.Path() / "parse.ps1";
  WriteFile(script, ParserScript);
  std::vector<std::string> words{"powershell.exe",   "-NoProfile", "-NonInteractive",
                                 "-ExecutionPolicy", "Bypass",     "-File",
                                 TextOf(script)};
  words.insert(words.end(), files.begin(), files.end());
  return Run(words);
}

}  // namespace tolmarpack
