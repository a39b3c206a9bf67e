#pragma once

#include <windows.h>

namespace c_interface {

/// @return the event that stands in for a handle that the host has not passed: without one no
/// download gets past its first progress event. Set by `tolmar_stop`. @throws Refusal when there is
/// none to be had.
HANDLE StopEvent();

/// @return the handle that the agent gets for what the host has passed.
inline HANDLE CancelHandle(void* given) { return given == nullptr ? StopEvent() : given; }

}  // namespace c_interface
