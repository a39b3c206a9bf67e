#include "tools/tolmarpack/Trial.h"

#include <json/value.h>
#include <json/writer.h>

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tools/cloudsim/JsonNode.h"
#include "tools/common/Timeline.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Package.h"
#include "tools/tolmarpack/Program.h"
#include "tools/tolmarpack/Publish.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds StartLimit(20);
constexpr std::chrono::milliseconds StartLook(50);

/// The simulator, as long as the trial goes on.
class Cloud {
 public:
  /// @param portFile in, not there yet.
  Cloud(const Lab& lab, const fs::path& catalogue, const fs::path& portFile)
      : _program(Words(lab, catalogue, portFile)) {
    const Clock::time_point begin = Clock::now();
    while (!fs::exists(portFile)) {
      if (!_program.IsRunning()) throw std::runtime_error("cloudsim: " + _program.Wait().output);
      if (Clock::now() - begin > StartLimit) throw std::runtime_error("cloudsim does not start");
      std::this_thread::sleep_for(StartLook);
    }
    const std::string port = ReadFile(portFile);
    address = lab.scheme + "://localhost:" + port.substr(0, port.find_first_of("\r\n"));
  }

  std::string address;

 private:
  static std::vector<std::string> Words(const Lab& lab, const fs::path& catalogue,
                                        const fs::path& portFile) {
    std::vector<std::string> words = lab.cloud;
    words.insert(words.end(), {"--catalogue", TextOf(catalogue), "--port", "0", "--port-file",
                               TextOf(portFile), "--realm", "trial"});
    return words;
  }

  Program _program;
};

/// The device's configuration. Waits between retries are shortened: nobody else asks this service.
void Configure(const Lab& lab, const std::string& address, const fs::path& catalogue) {
  constexpr double RetryWaitScale = 0.01;
  Json::Value service, device;
  cloudsim::ParseStrict(ReadFile(catalogue), service);
  device["baseUrl"] = address;
  device["tokenUrl"] = address + "/token";
  device["realm"] = "trial";
  device["deviceId"] = "PC-0001";
  device["sessionToken"] = service["sessionToken"];
  device["downloadFolder"] = lab.folderOnDevice + "\\download";
  device["logFolder"] = lab.folderOnDevice + "\\log";
  device["requireSignedPackages"] = lab.signer.IsNamed();
  device["retryWaitScale"] = RetryWaitScale;
  WriteFile(lab.folder / "host.json", Json::writeString(Json::StreamWriterBuilder(), device));
}

/// One trial on its way.
class Course {
 public:
  Course(const Lab& lab, std::string title, unsigned int timeoutSeconds)
      : _lab(lab), _timeout(std::to_string(timeoutSeconds)) {
    trial.title = std::move(title);
  }

  /// @return true when the check scripts say what is wanted.
  bool Detect(const std::string& name, const std::string& wanted) {
    const auto [status, length] = Ask({"status"});
    const std::string outcome = status == wanted ? status : status + " instead of " + wanted;
    trial.phases.push_back({name, outcome, status == wanted, length, {}});
    return trial.phases.back().isGood;
  }

  /// @return true when the title was installed and its installer had nothing to complain of.
  bool Install(const std::string& suffix) {
    const auto [status, length] = Ask({"install", "--timeout", _timeout});
    const std::vector<timeline::Title> ways = Ways();
    const bool isTold = ways.size() > _installations;
    if (isTold) AddSteps(ways[_installations], suffix);
    _installations = ways.size();
    trial.phases.push_back({"outcome" + suffix, status, status == "installed", length, {}});
    return trial.IsGood();
  }

  Trial trial;

 private:
  struct Answer {
    std::string status;  ///< of the title
    std::int64_t milliseconds;
  };

  Answer Ask(const std::vector<std::string>& arguments) const {
    const Clock::time_point begin = Clock::now();
    std::string status = StatusIn(RunHost(arguments));
    const auto length = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    return {std::move(status), length.count()};
  }

  Json::Value RunHost(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words = _lab.host;
    words.insert(words.end(), {"--config", _lab.folderOnDevice + "\\host.json", "--json"});
    words.insert(words.end(), arguments.begin(), arguments.end());
    const std::string output = Run(words).output;
    Json::Value document;
    std::istringstream lines(output);  // Complaints stand among them.
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with('{') && cloudsim::ParseStrict(line, document).empty()) return document;
    }
    throw std::runtime_error("tolmarctl: " + output);
  }

  std::string StatusIn(const Json::Value& document) const {
    for (const Json::Value& entry : document["result"]["swList"]) {
      if (entry["l1FruPn"] == trial.title && entry.isMember("status")) {
        return entry["status"].asString();
      }
    }
    return "unknown (code " + document["code"].asString() + ")";
  }

  /// @return how the title fared in each installation so far.
  std::vector<timeline::Title> Ways() const {
    const fs::path events = _lab.folder / "log" / "events.jsonl";
    std::vector<timeline::Title> ways;
    if (!fs::exists(events)) return ways;
    for (const timeline::Run& run : timeline::Read(ReadFile(events))) {
      for (const timeline::Title& title : run.titles) {
        if (title.partNumber == trial.title) ways.push_back(title);
      }
    }
    return ways;
  }

  void AddSteps(const timeline::Title& way, const std::string& suffix) {
    for (const timeline::Step& step : way.steps) {
      std::string outcome = step.cause;
      for (const std::string& note : step.notes) outcome += (outcome.empty() ? "" : "; ") + note;
      trial.phases.push_back(
          {step.phase + suffix, outcome, step.cause.empty(), step.length.value_or(0), {}});
      if (step.phase == "installed" && !step.cause.empty()) trial.phases.back().output = way.output;
    }
  }

  const Lab& _lab;
  std::string _timeout;
  std::size_t _installations = 0;
};

}  // namespace

bool Trial::IsGood() const {
  return std::all_of(phases.begin(), phases.end(), [](const Phase& phase) { return phase.isGood; });
}

Trial Try(const fs::path& folder, const Lab& lab, unsigned int timeoutSeconds) {
  const fs::path catalogue = lab.folder / "cloud" / "catalogue.json";
  const std::string title = Publish({folder}, catalogue, lab.signer).front().manifest.title;
  const Cloud cloud(lab, catalogue, lab.folder / "port");
  Configure(lab, cloud.address, catalogue);
  Course course(lab, title, timeoutSeconds);
  course.Detect("detect", "not installed");
  if (course.Install("") && course.Detect("detect after", "installed")) {
    // Once more on top, as a device does whose service asks for it.
    course.Install(" again");
    course.Detect("detect again", "installed");
  }
  return course.trial;
}

}  // namespace tolmarpack
