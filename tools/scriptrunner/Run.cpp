#include "tools/scriptrunner/Run.h"

#include <algorithm>
#include <exception>
#include <filesystem>

#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/Evaluator.h"
#include "tools/scriptrunner/FileCmdlets.h"
#include "tools/scriptrunner/Parser.h"
#include "tools/scriptrunner/System.h"

namespace scriptrunner {

namespace {

bool IsOneOf(const std::string& word, const std::vector<std::string>& words) {
  return std::find(words.begin(), words.end(), Lower(word)) != words.end();
}

std::string ReadScript(const std::filesystem::path& path) {
  std::string text = ReadFile(path);
  const bool hasMark = text.starts_with("\xEF\xBB\xBF");
  if (hasMark) text.erase(0, 3);
  if (text.find('\0') != std::string::npos) throw ScriptError(1, "the script is not UTF-8 text");
  const bool isAscii = std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
  if (!hasMark && !isAscii) throw ScriptError(1, "text beyond ASCII needs a byte order mark");
  return text;
}

std::string FolderOf(const std::filesystem::path& script) {
  std::filesystem::path folder = std::filesystem::absolute(script).parent_path();
  const std::u8string text = folder.make_preferred().u8string();
  return {text.begin(), text.end()};
}

}  // namespace

std::string ReadCommandLine(const std::vector<std::string>& words, Invocation& invocation) {
  const std::vector<std::string> flags{"noprofile", "noninteractive"};
  const std::vector<std::string> policies{"bypass",    "unrestricted", "remotesigned",
                                          "allsigned", "restricted",   "default"};
  const std::vector<std::string> styles{"hidden", "normal", "minimized", "maximized"};
  for (auto word = words.begin(); word != words.end(); ++word) {
    const bool isSwitch = word->starts_with('-') || word->starts_with('/');
    const std::string name = isSwitch ? Lower(word->substr(1)) : std::string();
    if (IsOneOf(name, flags)) continue;
    if (!IsOneOf(name, {"executionpolicy", "windowstyle", "file", "f"})) {
      return "'" + *word + "' is no switch of the subset";
    }
    if (++word == words.end()) return "-" + name + " needs a value";
    if (name == "file" || name == "f") {
      invocation = {*word, {word + 1, words.end()}};
      return {};
    }
    if (!IsOneOf(*word, name == "windowstyle" ? styles : policies)) {
      return "-" + name + " cannot be '" + *word + "'";
    }
  }
  return "-File is missing";
}

int RunScript(const Invocation& invocation, System& system) {
  const std::filesystem::path path = ToPath(invocation.script);
  if (!std::filesystem::is_regular_file(path)) {
    system.WriteError("The argument '" + invocation.script + "' to -File does not exist.");
    return ExitCode::NoScript;
  }
  try {
    const Script script = Parser(ReadScript(path)).Parse();
    return Evaluator(system, FolderOf(path)).Run(script, invocation.arguments);
  } catch (const ScriptError& error) {
    system.WriteError(invocation.script + ":" + std::to_string(error.Line()) + ": " + error.what());
    return ExitCode::Refused;
  } catch (const std::exception& failure) {
    system.WriteError(invocation.script + ": " + failure.what());
    return ExitCode::CommandFailed;
  }
}

}  // namespace scriptrunner
