#include <windows.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/download/DataRemoval.h"
#include "tools/common/Arguments.h"
#include "tools/common/CancelWatch.h"
#include "tools/common/Console.h"
#include "tools/tolmarhost/EventLog.h"
#include "tools/tolmarhost/Registration.h"
#include "tools/tolmarhost/Serve.h"
#include "tools/tolmarhost/Service.h"

namespace {

constexpr int Failure = 1;
constexpr int Usage = 2;

struct Options {
  bool console = false;
  bool install = false;
  bool uninstall = false;
  bool removeData = false;
  bool logs = false;
  std::string config;
};

void AddOptions(CLI::App& app, Options& options) {
  app.set_version_flag("--version", TOLMARHOST_VERSION);
  CLI::Option* console = app.add_flag("--console", options.console,
                                      "work at this prompt, as the service would, until Ctrl-C");
  CLI::Option* install =
      app.add_flag("--install", options.install, "register the service and its event log source");
  CLI::Option* uninstall =
      app.add_flag("--uninstall", options.uninstall, "stop the service and take both out again");
  console->excludes(install)->excludes(uninstall);
  install->excludes(uninstall);
  CLI::Option* remove = app.add_flag("--remove-data", options.removeData,
                                     "delete downloads, kept token and state; the logs stay");
  remove->excludes(console)->excludes(install)->excludes(uninstall);
  app.add_flag("--logs", options.logs, "the logs, too")->needs(remove);
  app.add_option(
         "--config", options.config,
         "configuration file: of this run (--console), or of the machine's hosts (--install)")
      ->excludes(uninstall);
}

int Tell(const std::wstring& failure) {
  if (failure.empty()) return 0;
  std::fprintf(stderr, "TolmarHost: %s\n", ZLT::String::UTF16ToUTF8(failure).c_str());
  return Failure;
}

int RunAtPrompt(const Options& options) {
  if (!options.config.empty()) {
    SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG",
                            ZLT::String::UTF8ToUTF16(options.config).c_str());
  }
  // Unbuffered, as it is on a console, a character of several bytes would go there in pieces.
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  const Console console;
  const CancelWatch watch(0);
  const EventLog log(true);
  const refhost::Handle never(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  if (!Serve(watch.Event(), never.Get(), log, [](DWORD) {})) EndHard();
  return 0;
}

int Run(const Options& options) {
  if (options.install) {
    return Tell(registration::Install(ZLT::String::UTF8ToUTF16(options.config)));
  }
  if (options.uninstall) return Tell(registration::Uninstall());
  if (options.removeData) {
    const std::wstring left = refhost::RemoveData(options.logs);
    return Tell(left.empty() ? left : L"left over: " + left);
  }
  if (options.console) return RunAtPrompt(options);
  if (RunAsService()) return 0;
  std::fputs("TolmarHost: a service is started by the service manager; --console works here\n",
             stderr);
  return Usage;
}

}  // namespace

int main() {
  CLI::App app("Keeps this device's entitled titles installed, as a service.", "TolmarHost");
  Options options;
  AddOptions(app, options);
  std::vector<std::string> arguments = Arguments();
  std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back.
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : Usage;
  }
  return Run(options);
}
