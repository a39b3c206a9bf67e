#include "tools/tolmarpack/Syntax.h"

#include <stdexcept>

#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

Ending RunParser(const std::vector<std::string>& files) {
  const std::filesystem::path script = FindAbove("scripts/powershell-syntax.mjs");
  if (script.empty()) throw std::runtime_error("scripts/powershell-syntax.mjs is not there");
  std::vector<std::string> words{"node", TextOf(script)};
  words.insert(words.end(), files.begin(), files.end());
  return Run(words);
}

}  // namespace tolmarpack
