#pragma once

#include <optional>

/// What this program does when a test runs it as a process to look at: see ChildModes.cpp.
/// @return its exit code; nothing when the arguments ask for the tests.
std::optional<int> RunAsChild(int count, char** arguments);
