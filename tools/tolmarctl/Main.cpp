#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "agent/TolmarAgent.h"
#include "host/common/Text.h"
#include "reference_host/Startup.h"
#include "tools/tolmarctl/CancelWatch.h"
#include "tools/tolmarctl/Output.h"

namespace {

constexpr int ExitUsage = 2;

std::vector<std::string> Arguments() {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(ZLT::String::UTF16ToUTF8(wide[i]));
  LocalFree(wide);
  return arguments;
}

bool StartHost(const Options& options) {
  if (!options.config.empty()) {
    SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG",
                            ZLT::String::UTF8ToUTF16(options.config).c_str());
  }
  std::wstring error;
  if (refhost::Start(error)) return true;
  std::fprintf(stderr, "tolmarctl: %s\n", ZLT::String::UTF16ToUTF8(error).c_str());
  return false;
}

/// Runs the command and shuts the agent down, whichever way the command ends. A cancelled run shuts
/// it down at once, since only that ends the wait between two tries of a query. The cancel event
/// outlives the agent's work: the agent may hold it as its newest caller handle.
Outcome RunWithAgent(const Options& options) {
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  std::once_flag cleaned;
  const auto cleanUp = [&] { std::call_once(cleaned, [&] { agent.CleanUp(); }); };
  const CancelWatch cancel(options.timeoutSeconds, cleanUp);
  Outcome outcome = RunCommand(agent, options, cancel.Event());
  cleanUp();
  return outcome;
}

}  // namespace

int main() {
  Options options;
  int exitStatus = 0;
  if (!ReadOptions(Arguments(), options, exitStatus)) return exitStatus;
  if (!StartHost(options)) return ExitUsage;
  const Outcome outcome = RunWithAgent(options);
  PrintOutcome(options, outcome);
  return outcome.code == 0 ? 0 : 1;
}
