#pragma once

#include <json/value.h>
#include <windows.h>

#include <string>
#include <thread>

#include "tools/common/Console.h"
#include "tools/tolmarctl/Pace.h"

class TolmarAgent;

/// Follows an installation from a thread of its own and prints how the current title is getting on:
/// a live bar on a terminal, a line for every change otherwise; for programs, an object for each.
class ProgressDisplay {
 public:
  /// @param titles in, the document that is being installed, as it was before. @param asJson in,
  /// true: for programs.
  ProgressDisplay(TolmarAgent& agent, Json::Value titles, bool asJson);
  ~ProgressDisplay();
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

 private:
  void Follow();
  void Poll();
  void Show(const Progress& progress);
  void ShowBar(const Progress& progress);
  void ShowObject(const Json::Value& object);
  void ShowLine(const Progress& progress);

  TolmarAgent& _agent;
  const Json::Value _titles;
  const bool _asJson;
  const bool _onTerminal;
  const Console _console;
  Pace _pace;
  Progress _shown;
  std::string _bar;     ///< as it stands on the terminal
  Json::Value _object;  ///< the newest that was printed
  HANDLE _done;
  std::thread _thread;
};
