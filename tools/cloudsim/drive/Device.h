#pragma once

#include <httplib.h>
#include <json/value.h>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "tools/cloudsim/drive/Figures.h"

namespace cloudsim {

/// The service that devices are driven against, and how. Unchanged meanwhile.
struct Target {
  std::string base;          ///< as in "https://localhost:8443"
  std::string tokenUrl;      ///< where the session token is exchanged
  std::string sessionToken;  ///< the same for all devices
  std::string authority;     ///< roots to trust, a PEM file; empty: the system's
  double waitScale = 1;      ///< of the waits before a query is sent again
  bool listOnly = false;     ///< ends with the list of titles
};

/// One device with the agent's own conversation: start-up, list, and for each title the file lists
/// of its modules, then for each module its files and the reports. A query that fails is sent again
/// after the agent's waits. One thread at a time.
class Device {
 public:
  using Clock = Figures::Clock;

  Device(const Target& target, std::string id);

  /// Plays on. @return how long to wait before the next call; nothing at the end.
  std::optional<Clock::duration> Play(Figures& figures);

  /// @return whether every query was answered and every file came whole.
  bool HasAll() const { return _hasAll; }

 private:
  /// One request that is to come; for a title, the questions of its modules.
  struct Step {
    Kind kind;
    Json::Value parameters{};
    std::string url{};
    std::uint64_t size = 0;
    bool isTitle = false;
  };
  /// How one went. @note `transient` and `refused`: the agent sends a query again.
  enum class Outcome { Answered, Refused, Transient, Lost };

  httplib::Client& ClientFor(const std::string& origin);
  Outcome Perform(const Step& step, Figures& figures);
  Outcome Ask(const Step& step, Sample& sample);
  Outcome Fetch(const Step& step, Sample& sample);
  void Follow(const Step& step, const Json::Value& result);
  void ExpandTitle(const Step& title);
  void ExpandModule(const Step& question, const Json::Value& files);
  bool HasToken(Figures& figures);
  Clock::duration Wait(Outcome outcome);

  const Target& _target;
  std::string _id;
  std::string _token;
  std::deque<Step> _steps;
  std::map<std::string, std::unique_ptr<httplib::Client>> _clients;
  int _retries = 0;
  bool _hasReported = false;
  bool _hasAll = true;
};

}  // namespace cloudsim
