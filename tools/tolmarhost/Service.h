#pragma once

/// Runs as the system's service, until that is stopped; blocks. To be called on the main thread.
/// @return the program's exit status; 2: the service manager has not started this process.
int RunAsService();
