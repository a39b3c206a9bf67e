#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "host/Export.h"
#include "reference_host/configuration/Configuration.h"

namespace refhost {

/// The process's configuration: the machine's policy above the token that is kept protected, above
/// the file, above the defaults. Any thread. What an operation returns by reference stays as it is
/// until the process ends, also when the configuration is read anew.

/// @return the configuration, complete with its defaults, read at the first call; null when there
/// is none that is usable.
const Configuration* GetConfiguration();

/// @return the configuration; the defaults where there is none that is usable.
ZLT_API const Configuration& Settings();

/// Reads it anew. What is not usable is not taken: the one that was read last holds.
/// @param error out, why, one line; empty when there is a usable one.
/// @return true when another one holds now than before.
ZLT_API bool ReloadConfiguration(std::wstring& error);

/// Names the file that the process reads, in the place of the one that it would look for, or gives
/// its text. What stands above the file stays so.
/// @param error out, why what they come to is not usable, one line; nothing has changed then.
/// @return false then.
bool UseConfigurationFile(const std::wstring& file, std::wstring& error);
bool UseConfigurationText(const std::string& json, std::wstring& error);

/// @return the name of the file that the process is to read (see `FileToRead`): the environment
/// variable is TOLMAR_HOST_CONFIG, the machine's value "ConfigurationFile" of
/// HKEY_LOCAL_MACHINE\SOFTWARE\Tolmar, 64-bit view. Empty when neither names one. Or what
/// `UseConfigurationFile` has named.
ZLT_API std::wstring ConfigurationFileName();

/// @return what it was read from, for a log line: "C:\...\host.json and HKEY_LOCAL_MACHINE\...".
ZLT_API std::wstring ConfigurationOrigin();

/// @return why there is no usable configuration, empty when there is one.
ZLT_API const std::wstring& ConfigurationError();

/// @return the settings as they may be shown to others (see `Shareable`); null when there is no
/// usable configuration.
ZLT_API Json::Value ShareableSettings();

/// @return every mistake in what the configuration is read from, now, a line each.
ZLT_API std::vector<std::string> ConfigurationComplaints();

}  // namespace refhost
