#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/cloudsim/Catalogue.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/Listeners.h"
#include "tools/cloudsim/Options.h"
#include "tools/cloudsim/Service.h"
#include "tools/cloudsim/drive/Drive.h"

namespace cloudsim {
namespace {

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

struct Offer {
  Catalogue catalogue;
  FaultList faults;
};

/// @throws DocumentError naming file and key.
Offer LoadOffer(const std::string& fileName) {
  std::ifstream stream(fileName, std::ios::binary);
  if (!stream) throw DocumentError(fileName + ": cannot be read");
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  Json::Value root;
  const std::string flaw = ParseStrict(text, root);
  if (!flaw.empty()) throw DocumentError(fileName + ": " + flaw);
  try {
    const JsonNode node(root);
    Offer offer{ReadCatalogue(node, std::filesystem::path(fileName).parent_path()), {}};
    if (const auto faults = node.Find("faults")) {
      offer.faults = ReadFaults(
          *faults, [&](const std::string& name) { return offer.catalogue.HasFileNamed(name); });
    }
    return offer;
  } catch (const DocumentError& error) {
    throw DocumentError(fileName + ": " + error.what());
  }
}

/// Whoever waits for the file never sees it half written.
void WritePortFile(const std::string& fileName, int port) {
  const std::string draft = fileName + ".new";
  std::ofstream(draft) << port << "\n" << std::flush;
  std::filesystem::rename(draft, fileName);
}

void Announce(const Options& options, const std::string& base, int port,
              const std::optional<Listeners>& console) {
  if (!options.portFile.empty()) WritePortFile(options.portFile, port);
  std::printf("cloudsim: listening on %s\n", base.c_str());
  if (console) std::printf("cloudsim: console at http://localhost:%d/\n", console->Port());
  std::fflush(stdout);
}

void Serve(const Options& options, Offer offer) {
  EndWatch end;
  Listeners listeners(options.tls, options.port);
  const std::string scheme = options.tls.certificate.empty() ? "http" : "https";
  const std::string base = scheme + "://localhost:" + std::to_string(listeners.Port());
  Service service(
      std::move(offer.catalogue), std::move(offer.faults), options.realm, base,
      {std::chrono::seconds(options.jwtSeconds), std::chrono::seconds(options.urlSeconds)},
      options.fileRate);
  for (const auto& server : listeners.Servers()) service.Register(*server);
  std::optional<Listeners> console;
  if (options.consolePort >= 0) {
    console.emplace(TlsFiles{}, options.consolePort);
    for (const auto& server : console->Servers()) service.RegisterControl(*server);
  }
  // Connections already queue up; and nothing behind this can fail, which would leave threads.
  Announce(options, base, listeners.Port(), console);
  listeners.Start();
  if (console) console->Start();
  end.Wait();
  service.Stop();
  // Threads that sit on idle connections hold nothing that needs an orderly end.
  const bool hasEnded = !console || console->Stop();
  if (!listeners.Stop() || !hasEnded) std::_Exit(EXIT_SUCCESS);
}

}  // namespace
}  // namespace cloudsim

int main(int argc, char** argv) {
  using namespace cloudsim;
  if (argc > 1 && std::string_view(argv[1]) == "drive") return Drive(argc - 1, argv + 1);
  Options options;
  if (const auto status = ReadOptions(argc, argv, options)) return *status;
  try {
    Serve(options, LoadOffer(options.catalogue));
  } catch (const DocumentError& error) {
    std::fprintf(stderr, "cloudsim: %s\n", error.what());
    return ExitUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cloudsim: %s\n", error.what());
    return ExitFailure;
  }
  return EXIT_SUCCESS;
}
