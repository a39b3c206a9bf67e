#include "tools/tolmarpack/Syntax.h"

#include <charconv>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

namespace {

/// @param rest in, "LINE:COLUMN: TEXT".
void AddFault(const std::string& file, const std::string& rest, LintReport& report) {
  const std::size_t colon = rest.find(": ");
  const std::string text = colon == std::string::npos ? rest : rest.substr(colon + 2);
  report.Add("syntax", file, std::strtoul(rest.c_str(), nullptr, 10),
             text.substr(0, text.find_last_not_of('\r') + 1));
}

}  // namespace

void LintSyntax(const std::vector<ScriptToParse>& scripts, LintReport& report) try {
  if (scripts.empty()) return;
  std::vector<std::string> files;
  files.reserve(scripts.size());
  for (const ScriptToParse& script : scripts) files.push_back(TextOf(script.path));
  const Ending ending = RunParser(files);
  if (ending.exitStatus != 0 && ending.exitStatus != 1) throw std::runtime_error(ending.output);
  std::istringstream lines(ending.output);
  const std::size_t before = report.findings.size();
  for (std::string line; std::getline(lines, line);) {
    std::size_t place = 0;
    const auto [end, fault] = std::from_chars(line.data(), line.data() + line.size(), place);
    if (fault == std::errc() && *end == ':' && place < scripts.size()) {
      AddFault(scripts[place].shown, end + 1, report);
    }
  }
  const bool isTold = report.findings.size() != before;
  if (ending.exitStatus == 1 && !isTold) throw std::runtime_error(ending.output);
} catch (const std::runtime_error& error) {
  const std::string why = error.what();
  report.unchecked.push_back("whether PowerShell understands the scripts: " +
                             why.substr(0, why.find_first_of("\r\n")));
}

}  // namespace tolmarpack
