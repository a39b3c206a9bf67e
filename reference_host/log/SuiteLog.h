#pragma once

namespace refhost {

/// Keeps the suite's own log, unless it is open already, closed until the process ends: for
/// programs that are to change nothing on the device. Any thread.
void KeepSuiteLogClosed();

}  // namespace refhost
