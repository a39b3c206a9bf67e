#pragma once

#include <string>

/// Installs the device's titles again and again in this process; prints a table of what it holds.
/// @param folder in, the device's, reset. @param installations in, 20 at
/// least.
/// @return false when an installation fails, or handles or memory do not grow as they must.
bool RunSteadily(const std::wstring& folder, unsigned int installations);
