#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tolmarpack {

/// A mistake that packages have. docs/packages.md has a section for each, under its id.
struct Rule {
  const char* id;
  const char* mistake;
};

const std::vector<Rule>& AllRules();

/// Where a rule has found its mistake.
struct Finding {
  std::string rule;  ///< its id
  std::string file;  ///< path as the user knows it
  std::size_t line;  ///< from 1; 0: the file as a whole
  std::string text;  ///< what was found, UTF-8, a phrase
};

/// What a look at packages came to.
struct LintReport {
  std::vector<Finding> findings;
  std::vector<std::string> unchecked;  ///< what could not be looked at and why, sentences

  void Add(const char* rule, const std::string& file, std::size_t line, const std::string& text) {
    findings.push_back({rule, file, line, text});
  }
};

}  // namespace tolmarpack
