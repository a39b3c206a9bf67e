#pragma once

#include <json/value.h>
#include <windows.h>

#include <string>
#include <thread>

class TolmarAgent;

/// Follows an installation from a thread of its own and prints how the current title is getting on:
/// a live bar on a terminal, a line for every change otherwise.
class ProgressDisplay {
 public:
  /// @param titles in, the document that is being installed, as it was before.
  ProgressDisplay(TolmarAgent& agent, Json::Value titles);
  ~ProgressDisplay();
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

 private:
  void Follow();
  void Poll();
  void Show(const std::string& title, const std::string& status, const std::string& progress);
  void ShowBar(const std::string& title, const std::string& status, int percent);

  TolmarAgent& _agent;
  const Json::Value _titles;
  const bool _onTerminal;
  std::string _shown;
  std::string _shownTitle;
  HANDLE _done;
  std::thread _thread;
};
