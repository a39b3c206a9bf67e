#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "agent/TolmarAgent.h"
#include "host/common/Text.h"
#include "reference_host/Startup.h"
#include "tools/common/AgentControl.h"
#include "tools/common/Arguments.h"
#include "tools/common/CancelWatch.h"
#include "tools/tolmarctl/Bundle.h"
#include "tools/tolmarctl/Config.h"
#include "tools/tolmarctl/Doctor.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Explain.h"
#include "tools/tolmarctl/LogFollower.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/ReportCommand.h"
#include "tools/tolmarctl/ServiceStatus.h"

namespace {

void NameConfiguration(const Options& options) {
  if (options.config.empty()) return;
  SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG", ZLT::String::UTF8ToUTF16(options.config).c_str());
}

bool StartHost() {
  std::wstring error;
  if (refhost::Start(error)) return true;
  std::fprintf(stderr, "tolmarctl: %s\n", ZLT::String::UTF16ToUTF8(error).c_str());
  return false;
}

/// Nothing but a query is under way while the agent starts: ending the process harms nobody.
[[noreturn]] void EndAtStart(CancelWatch::Cause cause) {
  const bool timedOut = cause == CancelWatch::Cause::Time;
  std::fprintf(stderr, "tolmarctl: %s while the agent was asking the service at its start\n",
               timedOut ? "timed out" : "cancelled");
  std::fflush(nullptr);
  const int status = timedOut ? ExitStatus::TimedOut : ExitStatus::Cancelled;
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
  std::abort();
}

/// Runs the command and shuts the agent down, whichever way the command ends. A cancelled run shuts
/// it down at once, since only that ends the wait between two tries of a query. The cancel event
/// outlives the agent's work: the agent may hold it as its newest caller handle.
/// @return nothing when the run was cancelled before the agent had started.
std::optional<Outcome> RunWithAgent(const Options& options, CancelWatch& watch) {
  // A command that only reads starts no pre-install worker.
  if (options.IsReadOnly()) TellEndpoint();
  TolmarAgent* const agent = StartAgent(watch.Event());
  if (agent == nullptr) return {};
  std::once_flag cleaned;
  const auto cleanUp = [&] { std::call_once(cleaned, [&] { agent->CleanUp(); }); };
  watch.OnCancel(cleanUp);
  Outcome outcome = RunCommand(*agent, options, watch.Event());
  cleanUp();
  watch.OnCancel(nullptr);
  return outcome;
}

int StatusOf(const Options& options, const Outcome& outcome, CancelWatch::Cause cause) {
  if (options.command == "run" && cause == CancelWatch::Cause::Time) return ExitStatus::Success;
  if (outcome.code == 0 && outcome.isDone && options.command != "run") return ExitStatus::Success;
  if (cause == CancelWatch::Cause::Console) return ExitStatus::Cancelled;
  return cause == CancelWatch::Cause::Time ? ExitStatus::TimedOut : ExitStatus::Failure;
}

}  // namespace

int main() {
  // Unbuffered, as they are on a console, a character of several bytes would go there in pieces.
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ);
  Options options;
  int exitStatus = 0;
  if (!ReadOptions(Arguments(), options, exitStatus)) return exitStatus;
  if (options.quiet && std::freopen("NUL", "w", stdout) == nullptr) return ExitStatus::Failure;
  if (options.command == "explain") return Explain(options);
  NameConfiguration(options);
  if (options.command == "doctor") return Doctor(options);
  if (options.command.starts_with("config ")) return Config(options);
  if (options.command == "service status") return ServiceStatus(options);
  if (options.command == "service run") return ServiceRun(options);
  std::optional<LogFollower> follower;
  if (options.verbose) follower.emplace();
  if (!StartHost()) return ExitStatus::Usage;
  if (options.command == "report") return Report(options);
  if (options.command == "bundle") return Bundle(options);
  CancelWatch watch(options.timeoutSeconds);
  const std::optional<Outcome> outcome = RunWithAgent(options, watch);
  follower.reset();  // What was logged stands before what came of it.
  if (!outcome) EndAtStart(watch.Why());
  const int status = StatusOf(options, *outcome, watch.Why());
  const bool isAsAgreed = PrintOutcome(options, *outcome);
  return isAsAgreed || status != ExitStatus::Success ? status : ExitStatus::Failure;
}
