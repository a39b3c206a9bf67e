#pragma once

#include <string>
#include <vector>

/// A command line that is worth showing.
struct Example {
  const char* command;  ///< in whose help it is; empty: the program's
  const char* line;
  const char* purpose;
};

const std::vector<Example>& AllExamples();

/// @return what stands below the help of a command (empty: of the program).
std::string ExamplesOf(const std::string& command);
