#pragma once

/// Runs as the system's service, until that is stopped; blocks. To be called on the main thread.
/// @return false when it was not the service manager that has started this process.
bool RunAsService();
