#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// The entries that the service writes to the system's application log, with its own name as their
/// source; tools/tolmarhost/messages.mc has them. Any thread.
class EventLog {
 public:
  /// @param echoes in, true: each entry goes to standard output as well.
  explicit EventLog(bool echoes);
  ~EventLog();
  EventLog(const EventLog&) = delete;
  EventLog& operator=(const EventLog&) = delete;

  /// @param message in, one of the message file's. @param texts in, its %1, %2 …; secrets are left
  /// out of them.
  void Write(DWORD message, const std::vector<std::wstring>& texts) const;

  /// Registers the source with this program's messages, or takes it out again; takes an
  /// administrator's rights. @return ERROR_SUCCESS or the system's error.
  static LSTATUS Register();
  static LSTATUS Unregister();

 private:
  const HANDLE _source;  ///< null: the log is not to be had, which nobody else suffers for
  const bool _echoes;
};
