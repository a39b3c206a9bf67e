#pragma once

#include <string>

#include "host/Export.h"

namespace ZLT {

/// A log file of the suite. Closed until `utility::InitLog` has opened it; a line written to a
/// closed log is dropped. Tokens and the queries of URLs are left out of what is written. Every
/// operation may be called from any thread at any time.
class ZLT_API Log {
 public:
  Log();
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  /// Writes one record at debug level.
  /// @param format in, wide printf format; "%s" takes a zero-terminated wide string. Never null.
  /// Does not throw; a record that cannot be written is lost.
  void d(const wchar_t* format, ...);

  /// Writes one record at error level; otherwise as `d`.
  /// @param format in, as for `d`.
  void e(const wchar_t* format, ...);

  /// Opens the log; called by `utility::InitLog`.
  /// @param fileName in, name without folder; the suite knows its log folder.
  /// @param level in, 1 (errors only) to 4 (everything).
  /// @return false when the file cannot be opened; the log then stays as it was.
  bool Open(const wchar_t* fileName, int level);

 private:
  struct State;
  State* m_pState;
};

/// The suite's own log ("ZLT.log").
ZLT_API extern Log g_log;

}  // namespace ZLT
