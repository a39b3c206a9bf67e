#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "tools/tolmarhost/EventLog.h"
#include "tools/tolmarhost/Keeper.h"
#include "tools/tolmarhost/PolicyWatch.h"
#include "tools/tolmarhost/WindowsDevice.h"

/// What the service does while it runs, at a prompt too.
class Host {
 public:
  /// @param stop in, the event that ends it. @param run in, the event that asks for a run, which
  /// the wait for it resets.
  Host(HANDLE stop, HANDLE run, const EventLog& log);

  /// Works until the stop; blocks.
  void Run();

  /// Ends what the stop's event does not reach; blocks. From another thread, once.
  void CleanUp() { _device.CleanUp(); }

  /// @return true when something goes on that nothing ends: the process has to be ended hard.
  bool IsStarting() const { return _device.IsStarting(); }

 private:
  /// @return true when there is a configuration to work by.
  bool TakeConfiguration();
  void Refuse(const std::wstring& why);
  bool Begin();
  void TellChange();
  void Sleep(service::Time until);

  const HANDLE _stop;
  const HANDLE _run;
  const EventLog& _log;
  WindowsDevice _device;
  std::optional<service::Keeper> _keeper;
  PolicyWatch _policy;
  std::wstring _refused;  ///< what was said last of an unusable configuration
  std::string _endpoint;  ///< that the agent goes by
};
