#pragma once

#include <string>

/// Command lines that run a module's scripts under the system's PowerShell.
namespace ScriptCommand {

/// @return the line that runs the check script at `path`.
std::wstring Check(const std::wstring& path);

/// @return the line that runs the install script at `path` with -command "install".
std::wstring Install(const std::wstring& path);

/// @return the line that runs the check script behind an installation.
std::wstring CheckAfterInstall(const std::wstring& path);

}  // namespace ScriptCommand
