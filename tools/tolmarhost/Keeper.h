#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/tolmarhost/Device.h"

namespace service {

/// Keeps a device's titles installed: asks now and then, and installs what is missing when it may.
/// One thread.
class Keeper {
 public:
  /// @param state in, as it was kept.
  Keeper(Device& device, State state);

  /// Plans the first run. To be called once, before `Work`.
  void Begin(const refhost::Configuration& settings);

  /// Does what is due; blocks as long as that takes.
  /// @return when there is something to be done again.
  Time Work(const refhost::Configuration& settings);

  /// Lets the next run come within the spread: what the device goes by has changed.
  void RunSoon(const refhost::Configuration& settings);

  /// Lets the next run come now, or a minute behind the last one's begin.
  void RunNow();

  /// Looks at once at what is missing: what kept it from being installed may have changed.
  void LookAgain();

  /// @return true when installers may start now.
  bool MayInstall(const refhost::Configuration& settings);

 private:
  /// What keeps installers from being started.
  struct Obstacle {
    Notice::Kind kind;
    Time again;       ///< when to look again
    std::string why;  ///< what a person is told
  };

  void Ask();
  void Sort(const Json::Value& titles);
  void InstallMissing();
  void FetchMissing();
  std::optional<Obstacle> FindObstacle();
  std::optional<Obstacle> LearnObstacle();
  bool IsTurn(const Json::Value& title);
  bool Install(Json::Value& title);
  void LearnFailure(const Json::Value& title, TitleState& state);
  const std::string& VersionOf(const Json::Value& title);
  void WakeAt(Time time);
  void Keep();
  Pace ThePace() const;
  WallClock Wall();

  Device& _device;
  State _state;
  const refhost::Configuration* _settings = nullptr;  ///< those of the call that is running
  std::vector<Json::Value> _missing;                  ///< in the order of their installation
  std::map<std::string, std::string> _versions;       ///< of lists, by part number, as asked for
  std::set<std::string> _fetched;                     ///< part numbers
  Time _asked = 0;
  std::string _told;  ///< what was said last of why nothing is installed
};

}  // namespace service
