#pragma once

#include <functional>

/// Stops one agent while so many threads wait in its retry loops, each in an operation of its own.
/// Prints the samples "agent", the milliseconds from the stop until each operation returned, and
/// before that "floor", the same for threads that do nothing but wait for an event. The service has
/// to refuse every request with 503.
/// @param retryWaits in, tells how many waits before a retry have begun in this process.
/// @throws std::runtime_error when not all of the threads get to wait.
void StopWaitingThreads(int threads, const std::function<int()>& retryWaits);
