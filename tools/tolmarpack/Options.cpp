#include "tools/tolmarpack/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Rules.h"

namespace tolmarpack {

namespace {

constexpr unsigned int MaxSeconds = 24 * 3600;

/// CLI11's own checks read a name in the PC's code page on Windows.
CLI::Validator Existing(const char* kind, const char* shown, bool takesFile, bool takesFolder) {
  const auto check = [=](const std::string& name) {
    std::error_code unused;
    const std::filesystem::file_status status = std::filesystem::status(PathOf(name), unused);
    const bool isFolder = std::filesystem::is_directory(status);
    const bool isGood = std::filesystem::exists(status) && (isFolder ? takesFolder : takesFile);
    return isGood ? std::string() : std::string(kind) + " does not exist: " + name;
  };
  return {check, shown};
}

CLI::Validator ExistingFile() { return Existing("File", "FILE", true, false); }
CLI::Validator ExistingFolder() { return Existing("Directory", "DIR", false, true); }
CLI::Validator ExistingPath() { return Existing("Path", "PATH(existing)", true, true); }

void AddSigner(CLI::App& command, Signer& signer) {
  CLI::Option* pfx = command.add_option("--pfx", signer.pfx, "certificate and key in one file");
  CLI::Option* certificate =
      command.add_option("--cert", signer.certificate, "the publisher's certificate, PEM");
  CLI::Option* key = command.add_option("--key", signer.key, "its private key, PEM");
  CLI::Option* chain =
      command.add_option("--chain", signer.chain, "certificates between it and the root, PEM");
  CLI::Option* password = command.add_option("--password-file", signer.passwordFile,
                                             "its first line opens the PFX or the key");
  CLI::Option* timestamp =
      command.add_option("--timestamp", signer.timestamp, "address of a time stamp service");
  for (CLI::Option* file : {pfx, certificate, key, chain, password}) file->check(ExistingFile());
  pfx->excludes(certificate)->excludes(key);
  certificate->needs(key);
  key->needs(certificate);
  timestamp->check([](const std::string& address) {
    return std::string(address.starts_with("http") ? "" : "no address of http or https");
  });
}

void AddYardstick(CLI::App& command, Options& options) {
  command.add_option("--config", options.configuration, "the devices' configuration")
      ->check(ExistingFile());
  command
      .add_option("--ca", options.roots, "what the devices trust, PEM; on Windows: this PC's roots")
      ->check(ExistingFile());
}

CLI::Option* AddPaths(CLI::App& command, Options& options, const char* name, const char* help) {
  return command.add_option(name, options.paths, help)->required();
}

void AddFolder(CLI::App& command, Options& options) {
  AddPaths(command, options, "FOLDER", "what new makes")->expected(1)->check(ExistingFolder());
}

void AddPackage(CLI::App& command, Options& options) {
  AddPaths(command, options, "CAB", "a package")->expected(1)->check(ExistingFile());
}

void AddLint(CLI::App& app, Options& options) {
  CLI::App* lint = app.add_subcommand("lint", "look for mistakes that packages have");
  AddPaths(*lint, options, "FOLDER|CAB", "folders and packages that meet on a device")
      ->check(ExistingPath());
  AddYardstick(*lint, options);
  std::vector<std::string> ids;
  for (const Rule& rule : AllRules()) ids.emplace_back(rule.id);
  lint->add_option("--allow", options.allowed, "a rule that is not applied")
      ->check(CLI::IsMember(ids))
      ->take_all()
      ->expected(1);
}

void AddCommands(CLI::App& app, Options& options) {
  AddPaths(*app.add_subcommand("new", "make a folder with everything that a package needs"),
           options, "NAME", "the folder; its last part is the package's name")
      ->expected(1);
  AddLint(app, options);
  CLI::App* build = app.add_subcommand("build", "pack a folder, always into the same bytes");
  AddFolder(*build, options);
  build->add_option("-o,--output", options.output, "the cabinet")->required();
  CLI::App* sign = app.add_subcommand("sign", "sign a package");
  AddPackage(*sign, options);
  sign->add_option("-o,--output", options.output, "the signed one; else in place");
  AddSigner(*sign, options.signer);
  CLI::App* verify = app.add_subcommand("verify", "tell what a host would say to a package");
  AddPackage(*verify, options);
  AddYardstick(*verify, options);
  CLI::App* test = app.add_subcommand("test", "install a package by the agent, twice, in a lab");
  AddFolder(*test, options);
  test->add_option("--timeout", options.timeoutSeconds, "seconds for each installation (1800)")
      ->check(CLI::Range(1u, MaxSeconds));
  test->add_option("--cloudsim", options.simulator,
                   "the simulator, else the one beside this program")
      ->check(ExistingFile());
  CLI::App* publish = app.add_subcommand("publish", "write a catalogue for the simulator");
  AddPaths(*publish, options, "FOLDER", "what new makes")->check(ExistingFolder());
  publish->add_option("--catalogue", options.catalogue, "the file; packages go beside it")
      ->required();
  AddSigner(*publish, options.signer);
}

constexpr char Examples[] = R"(Examples:
  tolmarpack new archiver
  tolmarpack lint archiver --json
  tolmarpack build archiver -o archiver.cab
  tolmarpack sign archiver.cab --cert publisher.crt --key publisher.key
  tolmarpack verify archiver.cab --config host.json --ca root.crt
  tolmarpack test archiver
  tolmarpack publish archiver bundler --catalogue cloud/catalogue.json --pfx publisher.pfx

docs/authoring.md goes through it, docs/packages.md has a section for each rule.
Exit status: 0 good, 1 not (mistakes, refused, not installed), 2 usage, or something is not there.)";

}  // namespace

bool ReadOptions(std::vector<std::string> arguments, Options& options, int& exitStatus) {
  CLI::App app("Makes packages and tells whether they install.", "tolmarpack");
  app.set_version_flag("--version", TOLMARPACK_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  app.add_flag("--json", options.json,
               "print one JSON object and nothing else (lint, verify, test)");
  AddCommands(app, options);
  app.footer(Examples);
  std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back.
  try {
    app.parse(arguments);
    options.command = app.get_subcommands().front()->get_name();
    if (options.command == "sign" && !options.signer.IsNamed()) {
      throw CLI::RequiredError("--pfx, or --cert and --key");
    }
  } catch (const CLI::ParseError& error) {
    exitStatus = app.exit(error) == 0 ? 0 : 2;
    return false;
  }
  return true;
}

}  // namespace tolmarpack
