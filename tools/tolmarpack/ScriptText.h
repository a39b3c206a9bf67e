#pragma once

#include <string>
#include <vector>

namespace tolmarpack {

/// @return the text, ASCII letters in lower case.
std::string Lower(std::string text);

/// A line of a PowerShell script, in lower case.
struct ScriptLine {
  std::string code;  ///< without comments
  std::string bare;  ///< without what stands in quotes, too
  int depth = 0;     ///< how many braces are open where it begins
};

/// @param bytes in, a script. @return its text, UTF-8: PowerShell reads UTF-16 too, behind its byte
/// order mark. Pure.
std::string ScriptIn(const std::string& bytes);

/// Takes a script apart as far as the rules need it: comments, quoted text, here-strings and
/// braces. It is no parser, and takes whatever it is given. Pure.
/// @param text in, UTF-8, with or without a byte order mark.
std::vector<ScriptLine> LinesOf(const std::string& text);

/// @return the words of a line: letters, digits and the signs that names and switches of commands
/// are made of ("restart-computer", "/quiet", "$psscriptroot", "msiexec.exe").
std::vector<std::string> WordsOf(const std::string& line);

}  // namespace tolmarpack
