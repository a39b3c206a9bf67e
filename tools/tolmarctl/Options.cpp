#include "tools/tolmarctl/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tools/tolmarctl/Examples.h"

namespace {

constexpr unsigned int DefaultConfigureSeconds = 600;
constexpr unsigned int MaxSeconds = 7 * 24 * 3600;  ///< a week: fits a wait in milliseconds

void AddSeconds(CLI::App* command, const std::string& name, Options& options,
                const std::string& help) {
  command->add_option(name, options.timeoutSeconds, help)->check(CLI::Range(1u, MaxSeconds));
}

/// What says how much is printed, and in which way; contradictions are refused.
void AddGeneral(CLI::App& app, Options& options) {
  app.add_option("--config", options.config,
                 "host configuration (else TOLMAR_HOST_CONFIG names it)");
  CLI::Option* json =
      app.add_flag("--json", options.json, "print one JSON object and nothing else");
  CLI::Option* quiet = app.add_flag("--quiet", options.quiet, "print nothing but errors");
  CLI::Option* verbose =
      app.add_flag("--verbose", options.verbose, "copy the logs of this run to standard error");
  quiet->excludes(json)->excludes(verbose);
}

void AddProgress(CLI::App& app, CLI::App& install, Options& options) {
  const auto asLines = [&options](const std::string&) {
    options.json = options.progressLines = true;
  };
  install
      .add_option_function<std::string>("--progress", asLines,
                                        "jsonl: one JSON object a line, the last that of --json")
      ->check(CLI::IsMember({"jsonl"}))
      ->excludes(app.get_option("--quiet"));
}

void AddCommands(CLI::App& app, Options& options) {
  app.add_subcommand("entitled", "ask whether the device is entitled to any title");
  app.add_subcommand("list", "list the entitled titles");
  CLI::App* status = app.add_subcommand("status", "tell which entitled titles are installed");
  CLI::App* install = app.add_subcommand("install", "install the entitled titles");
  for (CLI::App* command : {status, install}) {
    command->add_flag("--preinstall-only", options.preinstallOnly, "titles for device set-up only");
  }
  AddSeconds(install, "--timeout", options, "cancel after this many seconds");
  AddProgress(app, *install, options);
  CLI::App* files = app.add_subcommand("files", "list the files of one module");
  files->add_option("L1FRUPN", options.l1FruPn, "the title's part number")->required();
  files->add_option("MODULEFRUPN", options.moduleFruPn, "the module's part number")->required();
  app.add_subcommand("plan", "tell what an installation would do, and change nothing")
      ->add_flag("!--no-checks", options.asksChecks,
                 "do not ask the check scripts, which are fetched for that");
  app.add_subcommand("doctor", "examine what this device needs, and say what to do");
  app.add_subcommand("explain", "tell what a result code or a cause means and what to do")
      ->add_option("CODE|CAUSE", options.subject,
                   "a number (30, 0x1E) or an identifier; without it: all");
  app.add_subcommand("report", "tell what has happened on this device, title by title")
      ->add_option("--html", options.file, "write it as a page to this new file");
  app.add_subcommand("bundle", "pack logs, events, report, doctor's lines and configuration")
      ->add_option("FILE", options.file, "the new cabinet")
      ->required();
  CLI::App* configure = app.add_subcommand(
      "configure", "announce that the device was configured, wait for pre-install");
  AddSeconds(configure, "--timeout", options, "give up waiting after this many seconds (600)");
  configure->parse_complete_callback([&options] {
    if (options.timeoutSeconds == 0) options.timeoutSeconds = DefaultConfigureSeconds;
  });
  AddSeconds(app.add_subcommand("run", "stay resident until Ctrl-C"), "--for", options,
             "end after this many seconds");
}

void AddConfig(CLI::App& app, Options& options) {
  CLI::App* config = app.add_subcommand("config", "the host's configuration");
  config->require_subcommand(1);
  config->add_subcommand("show", "tell each setting and where it comes from");
  config->add_subcommand("validate", "name every mistake, those that do no harm now too");
  config
      ->add_subcommand("set-token",
                       "keep the session token, read from standard input, protected by Windows")
      ->add_flag("--remove", options.removes, "forget the one that is kept");
}

void AddService(CLI::App& app) {
  CLI::App* service = app.add_subcommand("service", "the service that keeps titles installed");
  service->require_subcommand(1);
  service->add_subcommand("status", "tell its last and next run, and what came of each title");
  service->add_subcommand("run", "have it ask now what is missing, and install that when it may");
}

/// Below each command stand its own examples.
void AddExamples(CLI::App& app, const std::string& name) {
  app.footer(ExamplesOf(name));
  for (CLI::App* command : app.get_subcommands({})) {
    AddExamples(*command, name.empty() ? command->get_name() : name + " " + command->get_name());
  }
}

/// @return the names of a command and the groups that it is in.
std::string CommandIn(const CLI::App& app) {
  const CLI::App* command = app.get_subcommands().front();
  if (command->get_subcommands().empty()) return command->get_name();
  return command->get_name() + " " + CommandIn(*command);
}

}  // namespace

bool Options::IsReadOnly() const {
  return command != "run" && command != "configure" && command != "install";
}

bool ReadOptions(std::vector<std::string> arguments, Options& options, int& exitStatus) {
  CLI::App app("Drives TolmarAgent.dll as a host would.", "tolmarctl");
  app.set_version_flag("--version", TOLMARCTL_VERSION);
  app.require_subcommand(1);
  app.fallthrough();  // General options may stand behind the command too.
  AddGeneral(app, options);
  AddCommands(app, options);
  AddConfig(app, options);
  AddService(app);
  AddExamples(app, "");
  std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back.
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    exitStatus = app.exit(error) == 0 ? 0 : 2;
    return false;
  }
  options.command = CommandIn(app);
  return true;
}
