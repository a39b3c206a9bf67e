#include "tools/tolmarpack/ScriptRules.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/tolmarpack/ScriptText.h"

namespace tolmarpack {

namespace {

using Words = std::vector<std::string>;
using Lines = std::vector<ScriptLine>;

bool Holds(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

bool IsAnyIn(const Words& words, std::initializer_list<const char*> wanted) {
  return std::any_of(wanted.begin(), wanted.end(), [&](const char* word) {
    return std::find(words.begin(), words.end(), word) != words.end();
  });
}

/// @return true when a word is that program, with or without its folder and extension.
bool IsProgramIn(const Words& words, const std::string& program) {
  return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
    return word.ends_with(program) || word.ends_with(program + ".exe");
  });
}

bool AnyBegins(const Words& words, std::initializer_list<std::string_view> begins) {
  return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
    return std::any_of(begins.begin(), begins.end(),
                       [&](std::string_view begin) { return word.starts_with(begin); });
  });
}

/// A line, taken apart once for all rules.
struct Sentence {
  explicit Sentence(const ScriptLine& from)
      : line(from), codeWords(WordsOf(line.code)), bareWords(WordsOf(line.bare)) {}

  const ScriptLine& line;
  Words codeWords;
  Words bareWords;
};

/// @return why a line waits for somebody, empty when it does not.
std::string Interaction(const Sentence& sentence) {
  for (const char* command :
       {"read-host", "pause", "get-credential", "out-gridview", "show-command", "wait-debugger"}) {
    if (IsAnyIn(sentence.bareWords, {command})) return std::string(command) + " waits for somebody";
  }
  for (const char* call : {"[console]::read", ".ui.prompt", ".ui.readline", "messagebox]::show"}) {
    if (Holds(sentence.line.bare, call)) return std::string(call) + " waits for somebody";
  }
  const Words& words = sentence.codeWords;
  if (IsProgramIn(words, "msiexec") && !AnyBegins(words, {"/q", "-q"}))
    return "msiexec without /qn shows windows";
  return {};
}

/// @return what restarts the PC in a line, empty when nothing does.
std::string Restart(const Sentence& sentence) {
  for (const char* command : {"restart-computer", "stop-computer"}) {
    if (IsAnyIn(sentence.bareWords, {command})) return command;
  }
  const Words& words = sentence.codeWords;
  if (IsAnyIn(words, {"/forcerestart", "-forcerestart"})) return "/forcerestart";
  return IsProgramIn(words, "shutdown") && IsAnyIn(words, {"/r", "-r", "/s", "-s", "/g", "-g"})
             ? "shutdown"
             : "";
}

/// @return what of the download folder a line relies on, empty when nothing.
std::string DownloadPath(ScriptKind kind, const Sentence& sentence, const std::string& folder) {
  const std::string& code = sentence.line.code;
  if (Holds(code, folder)) return "the download folder by its name";
  const bool isOwnFolder = Holds(code, "$psscriptroot") || Holds(code, "$myinvocation");
  if (kind == ScriptKind::Check) {
    return isOwnFolder ? "its own folder, which is the download folder" : "";
  }
  const bool isKept = IsAnyIn(sentence.codeWords,
                              {"new-service", "register-scheduledtask", "new-scheduledtaskaction",
                               "sc.exe", "set-itemproperty", "new-itemproperty"}) ||
                      IsProgramIn(sentence.codeWords, "schtasks") || Holds(code, ".targetpath");
  return isOwnFolder && isKept ? "a path into the unpacked package is kept" : "";
}

/// @return true when the parameters at the script's top have one that is called "command".
bool TakesCommand(const Lines& lines) {
  int depth = 0;
  bool isInside = false;
  for (const ScriptLine& line : lines) {
    std::string signs = line.bare;
    if (const auto at = signs.find("param"); !isInside && at != std::string::npos) {
      isInside = true;
      signs.erase(0, at);
    }
    if (!isInside) continue;
    if (IsAnyIn(WordsOf(signs), {"$command"})) return true;
    for (const char c : signs) {
      depth += c == '(' ? 1 : c == ')' ? -1 : 0;
      if (c == ')' && depth == 0) return false;
    }
  }
  return false;
}

/// What an `exit` or `throw` says of the title.
enum class Verdict { None, Installed, NotInstalled };

Verdict VerdictOf(const ScriptLine& line) {
  const Words words = WordsOf(line.bare);
  if (IsAnyIn(words, {"throw", "write-error"})) return Verdict::NotInstalled;
  const auto exit = std::find(words.begin(), words.end(), "exit");
  if (exit == words.end()) return Verdict::None;
  const bool isZero = exit + 1 == words.end() || exit[1] == "0";
  return isZero ? Verdict::Installed : Verdict::NotInstalled;
}

void LintCheck(const std::string& file, const Lines& lines, LintReport& report) {
  bool canFail = false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Verdict verdict = VerdictOf(lines[i]);
    canFail = canFail || verdict == Verdict::NotInstalled;
    const bool isCertain = lines[i].depth == 0 && lines[i].bare.find('{') == std::string::npos;
    if (verdict != Verdict::Installed || !isCertain || canFail) continue;
    return report.Add("check-always", file, i + 1, "nothing before this exit says no");
  }
  if (!canFail) report.Add("check-always", file, 0, "it never ends with another code than 0");
}

/// Windows PowerShell takes a script without a byte order mark for text of the PC's code page
/// ("about_Character_Encoding", Microsoft).
void LintEncoding(const std::string& file, const std::string& text, LintReport& report) {
  if (text.starts_with("\xEF\xBB\xBF") || text.starts_with("\xFF\xFE")) return;
  const auto beyond = std::find_if(text.begin(), text.end(), [](char c) { return c < 0; });
  if (beyond == text.end()) return;
  const auto line = static_cast<std::size_t>(std::count(text.begin(), beyond, '\n')) + 1;
  report.Add("encoding", file, line, "letters beyond ASCII without a byte order mark");
}

}  // namespace

void LintScript(ScriptKind kind, const std::string& file, const std::string& text,
                const std::string& downloadFolder, LintReport& report) {
  LintEncoding(file, text, report);
  const Lines lines = LinesOf(ScriptIn(text));
  const std::string folder = downloadFolder.empty() ? "\\tolmar\\download" : downloadFolder;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Sentence sentence(lines[i]);
    const std::array<std::pair<const char*, std::string>, 3> found{
        {{"interactive", Interaction(sentence)},
         {"restart", Restart(sentence)},
         {"download-path", DownloadPath(kind, sentence, folder)}}};
    for (const auto& [rule, what] : found) {
      if (!what.empty()) report.Add(rule, file, i + 1, what);
    }
  }
  if (kind == ScriptKind::Check) LintCheck(file, lines, report);
  if (kind == ScriptKind::Installer && !TakesCommand(lines)) {
    report.Add("installer-command", file, 0, "no parameter $command");
  }
}

}  // namespace tolmarpack
