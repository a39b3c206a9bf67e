#pragma once

#include <string>

/// A phase of the agent's work in which it is told to stop.
struct Phase {
  const char* name;
  const char* logLine;       ///< what the agent's log shows once the phase is on; null: see `file`
  const wchar_t* file;       ///< what a script leaves below the download folder once it runs
  bool inStatusQuery;        ///< reached by asking what is installed, else by an installation
  bool downloadFolderInUse;  ///< needs a file in the download folder that cannot be deleted
};

/// @return the phase of that name, null when there is none.
const Phase* FindPhase(const std::string& name);

/// Waits until the agent is in the phase.
/// @param folder in, the trial's, with "log" and "download" in it.
/// @return false when that does not come about in a minute or two.
bool IsReached(const Phase& phase, const std::wstring& folder);
