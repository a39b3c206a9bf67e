#include "tools/cloudsim/drive/Drive.h"

#include <json/writer.h>
#include <CLI/CLI.hpp>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <mutex>
#include <queue>
#include <thread>

#include "tools/cloudsim/drive/Device.h"
#include "tools/common/CommandLine.h"

namespace cloudsim {
namespace {

using Clock = Figures::Clock;

struct Options {
  Target target;
  int devices = 100;
  double rate = 0;  ///< devices a second; 0: as many as there are workers
  int workers = 64;
  std::string prefix = "LOAD-";
  std::string json;
};

/// Whose turn it is. Any thread.
class Turns {
 public:
  using Turn = std::pair<Clock::time_point, std::size_t>;  ///< when it is, and whose

  /// @param devices in, how many have to end.
  explicit Turns(std::size_t devices) : _left(devices) {}

  void Add(const Turn& turn) {
    const std::scoped_lock lock(_mutex);
    _queue.push(turn);
    _changed.notify_one();
  }

  void End() {
    const std::scoped_lock lock(_mutex);
    if (--_left == 0) _changed.notify_all();
  }

  /// Blocks until somebody's time has come. @return nothing once every device has ended.
  std::optional<Turn> Next() {
    std::unique_lock lock(_mutex);
    while (_left > 0) {
      if (_queue.empty()) {
        _changed.wait(lock);
      } else if (_queue.top().first > Clock::now()) {
        _changed.wait_until(lock, Clock::time_point(_queue.top().first));
      } else {
        const Turn turn = _queue.top();
        _queue.pop();
        return turn;
      }
    }
    return std::nullopt;
  }

 private:
  std::mutex _mutex;
  std::condition_variable _changed;
  std::priority_queue<Turn, std::vector<Turn>, std::greater<>> _queue;
  std::size_t _left;
};

/// What each thread does: plays whoever's turn it is until all have ended.
void Work(std::deque<Device>& devices, Turns& turns, Figures& figures) {
  while (const std::optional<Turns::Turn> turn = turns.Next()) {
    const auto& [due, device] = *turn;
    figures.AddDelay(Clock::now() - due);
    if (const std::optional<Clock::duration> wait = devices[device].Play(figures)) {
      turns.Add({Clock::now() + *wait, device});
    } else {
      turns.End();
    }
  }
}

Json::Value Run(const Options& options) {
  const Clock::time_point start = Clock::now();
  std::deque<Device> devices;
  Turns turns(static_cast<std::size_t>(options.devices));
  for (std::size_t i = 0; i < static_cast<std::size_t>(options.devices); ++i) {
    devices.emplace_back(options.target, options.prefix + std::to_string(i + 1));
    const std::chrono::duration<double> after(
        options.rate > 0 ? static_cast<double>(i) / options.rate : 0);
    turns.Add({start + std::chrono::duration_cast<Clock::duration>(after), i});
  }
  Figures figures(start);
  {
    std::vector<std::jthread> workers;
    workers.reserve(static_cast<std::size_t>(options.workers));
    for (int i = 0; i < options.workers; ++i) {
      workers.emplace_back([&] { Work(devices, turns, figures); });
    }
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  Json::Value document = figures.ToJson(seconds);
  document["devices"] = options.devices;
  document["complete"] = static_cast<Json::Int64>(std::count_if(
      devices.begin(), devices.end(), [](const Device& device) { return device.HasAll(); }));
  return document;
}

void Print(const Json::Value& document) {
  std::printf("| %-16s | %8s | %6s | %8s | %8s | %8s | %8s |\n", "request", "number", "errors",
              "p50 ms", "p90 ms", "p99 ms", "max ms");
  std::puts("|------------------|---------:|-------:|---------:|---------:|---------:|---------:|");
  for (const Json::Value& row : document["kinds"]) {
    std::printf("| %-16s | %8lld | %6lld | %8.1f | %8.1f | %8.1f | %8.1f |\n",
                row["kind"].asCString(), static_cast<long long>(row["requests"].asInt64()),
                static_cast<long long>(row["errors"].asInt64()), row["p50"].asDouble(),
                row["p90"].asDouble(), row["p99"].asDouble(), row["max"].asDouble());
  }
  std::printf("\n%d of %d devices got all, in %.1f s: %.0f requests a second, %.1f MB a second\n",
              document["complete"].asInt(), document["devices"].asInt(),
              document["seconds"].asDouble(), document["requestsPerSecond"].asDouble(),
              document["bytes"].asDouble() / 1e6 / document["seconds"].asDouble());
  std::printf("a device's turn came so late (ms): p50 %.1f, p99 %.1f\n",
              document["delay"]["p50"].asDouble(), document["delay"]["p99"].asDouble());
  for (const std::string& error : document["errors"].getMemberNames()) {
    std::printf("%s: %s\n", error.c_str(), document["errors"][error].asString().c_str());
  }
}

void Write(std::ostream& file, const Json::Value& document) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["precision"] = 6;
  file << Json::writeString(builder, document) << std::endl;
}

/// @return what is wrong with it: each device would find that out for itself.
std::string FlawOfUrl(const std::string& url) {
  const bool isGood = url.starts_with("https://") || url.starts_with("http://");
  return isGood ? "" : url + " does not begin with https:// or http://";
}

void AddAll(CLI::App& app, Options& options) {
  app.add_option("url", options.target.base, "base URL of the service")
      ->required()
      ->check(FlawOfUrl);
  app.add_option("--devices", options.devices, "how many devices")
      ->check(CLI::Range(1, 10'000'000))
      ->capture_default_str();
  app.add_option("--rate", options.rate, "devices that begin a second (0: as quick as it goes)")
      ->check(CLI::Range(0.0, 1e6))
      ->capture_default_str();
  app.add_option("--workers", options.workers, "how many are at it at the same time")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--prefix", options.prefix, "of the devices' names")->capture_default_str();
  app.add_option("--token-url", options.target.tokenUrl, "default: URL/token")->check(FlawOfUrl);
  app.add_option("--ca", options.target.authority, "roots to trust, PEM; default: the system's")
      ->check(CLI::ExistingFile);
  app.add_option("--wait-scale", options.target.waitScale,
                 "of the waits before a query is repeated")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_flag("--list-only", options.target.listOnly, "token and list of titles, nothing more");
  app.add_option("--json", options.json, "file for the figures");
}

}  // namespace

int Drive(int argc, char** argv) {
  constexpr int ExitUsage = 2;
  CLI::App app(
      "Plays devices against a service. TOLMAR_SESSION_TOKEN holds the session token of all.",
      "cloudsim drive");
  Options options;
  AddAll(app, options);
  if (const auto status = EndOfParsing(app, argc, argv)) return *status;
  const char* token = std::getenv("TOLMAR_SESSION_TOKEN");
  if (token == nullptr) {
    std::fputs("cloudsim drive: the environment has no TOLMAR_SESSION_TOKEN\n", stderr);
    return ExitUsage;
  }
  options.target.sessionToken = token;
  if (options.target.tokenUrl.empty()) options.target.tokenUrl = options.target.base + "/token";
  std::ofstream file;
  if (!options.json.empty()) file.open(options.json);
  if (!file) {
    std::fprintf(stderr, "cloudsim drive: %s: cannot be written\n", options.json.c_str());
    return ExitUsage;
  }
  const Json::Value document = Run(options);
  Print(document);
  if (file.is_open()) Write(file, document);
  if (!file) {
    std::fprintf(stderr, "cloudsim drive: %s: was not written whole\n", options.json.c_str());
  }
  return file && document["complete"] == document["devices"] ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace cloudsim
