#pragma once

#include <functional>

/// What the benchmarks' programs for Windows begin and end with.
namespace HostProgram {

/// Starts the host suite with the configuration that TOLMAR_HOST_CONFIG names.
/// @throws std::runtime_error when it has none that is usable.
void Start();

/// Runs `work`; what it throws is told on standard error.
/// @param name in, the program's. @return what `work` returns, 1 when it throws.
int Run(const char* name, const std::function<int()>& work);

/// Ends the process as it is: an agent that was not cleaned up, or threads that do not come back,
/// may still be at work, so nothing is taken down under them.
[[noreturn]] void End(int status);

}  // namespace HostProgram
