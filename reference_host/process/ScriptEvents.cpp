#include "reference_host/process/ScriptEvents.h"

#include <string_view>

#include "reference_host/log/Event.h"
#include "reference_host/process/Restart.h"

namespace refhost {

namespace {

constexpr std::size_t ToldOutputBytes = 2000;

std::string NameOf(ScriptKind kind) {
  return kind == ScriptKind::Installer ? "installer" : "check";
}

/// @return identifier of the cause (Causes.h), empty when all went well.
std::string CauseOf(ScriptKind kind, const ScriptEnd& end) {
  const bool wantsRestart =
      kind == ScriptKind::Installer && RestartOf(end.exitCode) != Restart::None;
  if (end.how == WaitEnd::TimedOut) return NameOf(kind) + ".time-out";
  if (end.how == WaitEnd::GivenUp) return NameOf(kind) + ".cancelled";
  return end.exitCode == 0 || wantsRestart ? std::string() : NameOf(kind) + ".exit-code";
}

/// @return the name of the script in its command line, empty when there is none.
std::wstring ScriptIn(const std::wstring& commandLine) {
  constexpr std::wstring_view Extension = L".ps1";
  const std::size_t end = commandLine.find(Extension);
  if (end == std::wstring::npos) return {};
  const std::size_t begin = commandLine.find_last_of(L"\\/\" ", end) + 1;
  return commandLine.substr(begin, end + Extension.size() - begin);
}

void TellRestart(unsigned long exitCode) {
  const Restart restart = RestartOf(exitCode);
  if (restart == Restart::None) return;
  RecordRestart(restart);
  Event("restart.wanted")
      .With("restart", restart == Restart::Required ? "required" : "initiated")
      .With("exitCode", exitCode)
      .Write();
}

}  // namespace

void TellScriptBegins(ScriptKind kind, const std::wstring& commandLine) {
  Event("script.began")
      .With("kind", NameOf(kind))
      .With("script", ScriptIn(commandLine))
      .With("commandLine", commandLine)
      .Write();
}

void TellScriptNotStarted(ScriptKind kind, const std::wstring& commandLine, unsigned long error) {
  Event("script.ended")
      .With("kind", NameOf(kind))
      .With("script", ScriptIn(commandLine))
      .With("reason", "not started, error " + std::to_string(error))
      .With("cause", NameOf(kind) + ".not-started")
      .Write();
}

void TellScriptEnd(ScriptKind kind, const std::wstring& commandLine, const ScriptEnd& end,
                   const ProcessOutput& output) {
  Event event("script.ended");
  event.With("kind", NameOf(kind)).With("script", ScriptIn(commandLine));
  const bool byItself = end.how == WaitEnd::Signalled;
  if (byItself) event.With("exitCode", end.exitCode);
  event.With("reason", byItself ? std::wstring() : end.text)
      .With("ms", end.duration.count())
      .With("output", EndOf(output, ToldOutputBytes))
      .With("cause", CauseOf(kind, end))
      .Write();
  if (kind == ScriptKind::Installer && byItself) TellRestart(end.exitCode);
}

}  // namespace refhost
