#pragma once

#include <windows.h>

#include <atomic>
#include <mutex>

#include "reference_host/base/Handle.h"
#include "tools/tolmarhost/Device.h"
#include "tools/tolmarhost/EventLog.h"

class TolmarAgent;

/// This device, its agent and its time. What blocks is called on one thread.
class WindowsDevice : public service::Device {
 public:
  /// @param stop in, the event that ends all work. @param log in, where notices go.
  WindowsDevice(HANDLE stop, const EventLog& log);

  /// Ends what the agent has under way, and the waits between its tries, which the event alone does
  /// not; blocks until that is done. To be called once the event is signalled, from another thread.
  void CleanUp();

  /// @return true when the agent is being started, which nothing ends, or has been behind the stop.
  bool IsStarting() const { return _isStarting; }

  /// Tells the agent of another endpoint. @param installs in, true: what the device's set-up wants
  /// may be installed at once.
  void ChangeEndpoint(bool installs);

  service::Time Now() override;
  service::WallTime Wall(service::Time time) override;
  double Random() override;
  bool IsStopping() override;
  std::uint32_t Ask(refhost::ServiceInstalls wanted, Json::Value& document) override;
  std::string VersionOf(const Json::Value& title) override;
  void Install(Json::Value& title, std::optional<service::Time> until) override;
  void Fetch(const Json::Value& title) override;
  std::string Running(const std::vector<std::string>& programs) override;
  void Tell(const service::Notice& notice) override;
  void Keep(const service::State& state) override;

 private:
  /// @return the agent, started at the first call; null when the stop came before that was done.
  TolmarAgent* Agent();
  std::vector<Json::Value> ListsOf(const Json::Value& title);
  void WatchWindow(const Json::Value& title, service::Time until, HANDLE done);

  const HANDLE _stop;
  const EventLog& _log;
  std::mutex _mutex;          ///< the stop may come while the agent is being started
  bool _isCleanedUp = false;  ///< under it
  std::atomic<bool> _isStarting = false;
  std::atomic<TolmarAgent*> _agent = nullptr;  ///< set under it
  /// What ends one title's installation. The agent keeps the newest handle that it was given, so it
  /// lives as long as the device.
  const refhost::Handle _cancel{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

/// @return the service's state as it was kept, an empty one when there is none.
service::State KeptState();
