#pragma once

#include <windows.h>

#include <functional>

#include "tools/tolmarhost/EventLog.h"

/// Works until the stop, then ends in order; blocks.
/// @param stop in, the event that ends it. @param run in, as `Host` has it. @param pending in,
/// called once a second while it ends, with the milliseconds that it may take yet.
/// @return false when something goes on still that does not end: the process is then to be ended
/// hard (`EndHard`). Downloads go on at the next start, an installer runs on, a question is lost.
bool Serve(HANDLE stop, HANDLE run, const EventLog& log, const std::function<void(DWORD)>& pending);

/// Ends the process without any clean-up.
[[noreturn]] void EndHard();
