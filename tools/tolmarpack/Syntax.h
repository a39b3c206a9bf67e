#pragma once

#include <filesystem>
#include <vector>

#include "tools/tolmarpack/Program.h"
#include "tools/tolmarpack/Rules.h"

namespace tolmarpack {

/// Has scripts parsed by PowerShell's grammar; what is wrong with them becomes findings, that there
/// is no parser here becomes something unchecked.
/// @param scripts in, where each is; findings name it as `shown`.
struct ScriptToParse {
  std::filesystem::path path;
  std::string shown;
};
void LintSyntax(const std::vector<ScriptToParse>& scripts, LintReport& report);

/// Runs this system's parser: one line N:LINE:COLUMN: TEXT for each fault in the Nth file, from 0,
/// status 0 or 1. Names would come back in the code page of the PC's console. Natively that is a
/// grammar (scripts/powershell-syntax.mjs, by node), on Windows PowerShell's own.
/// @throws std::runtime_error when it is not there.
Ending RunParser(const std::vector<std::string>& files);

}  // namespace tolmarpack
