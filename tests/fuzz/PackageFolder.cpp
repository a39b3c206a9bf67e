// What authors write: a package.json, or a script, as the rules read it.

#include <algorithm>

#include "tests/fuzz/Input.h"
#include "tools/tolmarpack/Manifest.h"
#include "tools/tolmarpack/ScriptRules.h"
#include "tools/tolmarpack/ScriptText.h"

using namespace tolmarpack;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = Input{data, size}.Text();
  Manifest manifest;
  const bool isRead = ParseManifest(text, manifest).empty();
  Require(isRead != manifest.title.empty(), "complete on success only");
  Require(!isRead || !(manifest.module.empty() || manifest.name.empty()), "nothing is empty");
  const std::string script = ScriptIn(text);
  const std::vector<ScriptLine> lines = LinesOf(script);
  const auto ends = static_cast<std::size_t>(std::count(script.begin(), script.end(), '\n'));
  Require(lines.size() == ends + 1, "no line is lost");
  for (const ScriptLine& line : lines) {
    Require(line.bare.size() <= line.code.size() && line.depth >= 0, "what is quoted is code too");
  }
  for (const ScriptKind kind : {ScriptKind::Installer, ScriptKind::Check}) {
    LintReport report;
    LintScript(kind, "script", text, "", report);
    for (const Finding& finding : report.findings) {
      Require(finding.line <= lines.size() && !finding.text.empty(), "a mistake has its place");
    }
  }
  return 0;
}
