#pragma once

#include "tools/tolmarpack/Package.h"
#include "tools/tolmarpack/Publish.h"
#include "tools/tolmarpack/Rules.h"
#include "tools/tolmarpack/Trial.h"
#include "tools/tolmarpack/Verdict.h"

namespace tolmarpack {

/// Each prints what a command came to on standard output, for people or as one JSON object in ASCII
/// (docs/schema/), and returns whether all is well.
bool Print(const LintReport& report, bool asJson);
bool Print(const std::string& package, const Verdict& verdict, bool asJson);
bool Print(const Trial& trial, bool asJson);
void Print(const PackageFolder& folder, const std::filesystem::path& cabinet);
void Print(const std::vector<Published>& modules, const std::string& catalogue);

}  // namespace tolmarpack
