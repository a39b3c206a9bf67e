#pragma once

#include <windows.h>

#include <string>

/// The service as the system's service manager has it.
namespace registration {

/// Registers this program as the service, with its settings and its source of the event log; one
/// that is registered already is set anew.
/// @param configuration in, the configuration file to write into the machine's registry; empty: it
/// stays as it is.
/// @return an empty text on success, else what is wrong (a phrase).
std::wstring Install(const std::wstring& configuration);

/// Stops the service and takes it and its source out again; files stay. @return as above.
std::wstring Uninstall();

/// Gives the registered service what an installer may not know to give: delayed start, restarts
/// after a crash, description, and as long before a shut-down as a stop takes at the most.
/// @return what the system did not take (a phrase for a log line), empty when nothing.
std::wstring ApplySettings();

}  // namespace registration
