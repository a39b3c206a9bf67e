#pragma once

namespace refhost {

/// Keeps the suite's own log, unless it is open already, closed until the process ends: for
/// programs that are to change nothing on the device. Any thread.
void KeepSuiteLogClosed();

/// @return true when it is kept closed, and the events with it.
bool IsSuiteLogKeptClosed();

}  // namespace refhost
