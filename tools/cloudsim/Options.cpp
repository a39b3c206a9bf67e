#include "tools/cloudsim/Options.h"

#include <CLI/CLI.hpp>

#include "tools/common/CommandLine.h"

namespace cloudsim {
namespace {

constexpr int MaxSeconds = 365 * 24 * 3600;

void AddAll(CLI::App& app, Options& options) {
  app.set_version_flag("--version", CLOUDSIM_VERSION);
  app.add_option("--catalogue", options.catalogue, "titles, modules, files and faults, as JSON")
      ->required();
  app.add_option("--port", options.port, "port to listen on (0: a free one)")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--port-file", options.portFile, "file to write the port to when ready");
  CLI::Option* certificate =
      app.add_option("--tls-cert", options.tls.certificate, "certificate chain for https, PEM");
  CLI::Option* key = app.add_option("--tls-key", options.tls.key, "its private key, PEM");
  certificate->needs(key)->check(CLI::ExistingFile);
  key->needs(certificate)->check(CLI::ExistingFile);
  app.add_option("--realm", options.realm, "realm named in the tokens")->capture_default_str();
  app.add_option("--jwt-seconds", options.jwtSeconds, "how long a token is in force")
      ->check(CLI::Range(0, MaxSeconds))
      ->capture_default_str();
  app.add_option("--url-seconds", options.urlSeconds, "how long a file's address is in force")
      ->check(CLI::Range(0, MaxSeconds))
      ->capture_default_str();
  app.add_option("--file-rate", options.fileRate,
                 "bytes a second that each file is sent with (0: as quick as it goes)")
      ->capture_default_str();
  app.add_option("--console-port", options.consolePort,
                 "port for the console without TLS as well (0: a free one)")
      ->check(CLI::Range(0, 65535));
}

}  // namespace

std::optional<int> ReadOptions(int argc, char** argv, Options& options) {
  CLI::App app("The cloud service on one machine, with faults on order.", "cloudsim");
  app.footer("cloudsim drive plays devices against a service: cloudsim drive --help");
  AddAll(app, options);
  return EndOfParsing(app, argc, argv);
}

}  // namespace cloudsim
