#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "reference_host/configuration/Configuration.h"
#include "tools/common/ServiceState.h"
#include "tools/tolmarhost/Schedule.h"

namespace service {

/// Something that an operator may want to know; each has an entry of the event log.
struct Notice {
  enum class Kind {
    AskingFailed,   ///< code
    Installed,      ///< title
    Failed,         ///< title, code, text: what is known
    Refused,        ///< the same, of a package whose signature or publisher is not accepted
    GivenUp,        ///< title, text: how often it was tried
    Deferred,       ///< text: the program that runs
    OutsideWindow,  ///< text: when one opens, as far as it is known
  };

  Kind kind = Kind::Installed;
  std::string title;  ///< part number and name
  std::uint32_t code = 0;
  std::string cause;
  std::string text;
};

/// What the service needs of the device that it runs on, of the agent and of the time. Tests play
/// one.
class Device {
 public:
  Device() = default;
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  virtual Time Now() = 0;
  virtual WallTime Wall(Time time) = 0;
  virtual double Random() = 0;  ///< @return 0 to 1
  virtual bool IsStopping() = 0;

  /// Asks for the titles, and which are installed; blocks.
  /// @param document out, as the agent gives it. @return the agent's code.
  virtual std::uint32_t Ask(refhost::ServiceInstalls wanted, Json::Value& document) = 0;

  /// @return what changes when the title's list of files does; empty when it is not to be had.
  virtual std::string VersionOf(const Json::Value& title) = 0;

  /// Installs; blocks. @param title in and out, as `InstallTitle` has it.
  /// @param until in, when no installer may start any more; nothing: any time.
  virtual void Install(Json::Value& title, std::optional<Time> until) = 0;

  /// Fetches a title's packages and keeps them; blocks. Nobody needs to know whether it worked.
  virtual void Fetch(const Json::Value& title) = 0;

  /// @return the first of these programs that runs; empty: none.
  virtual std::string Running(const std::vector<std::string>& programs) = 0;

  virtual void Tell(const Notice& notice) = 0;

  /// Keeps the state where a restart of the machine leaves it.
  virtual void Keep(const State& state) = 0;
};

}  // namespace service
