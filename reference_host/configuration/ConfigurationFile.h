#pragma once

#include <string>

#include "host/Export.h"
#include "reference_host/configuration/Configuration.h"

namespace refhost {

/// @return the process's configuration, complete with its defaults, read once; null when there is
/// none that is usable.
const Configuration* GetConfiguration();

/// @return the process's configuration; the defaults where there is none that is usable.
const Configuration& Settings();

/// @return the name of the file that the process is to read (see `FileToRead`): the environment
/// variable is TOLMAR_HOST_CONFIG, the machine's value "ConfigurationFile" of
/// HKEY_LOCAL_MACHINE\SOFTWARE\Tolmar, 64-bit view. Empty when neither names one.
ZLT_API std::wstring ConfigurationFileName();

/// @return why there is no usable configuration, empty when there is one.
const std::wstring& ConfigurationError();

/// @return where the process's configuration has come from: its file, or words for a given text.
const std::wstring& ConfigurationOrigin();

/// Reads the process's configuration from a file that the host program names, or from a text that
/// it gives, in the place of `ConfigurationFileName`.
/// @param error out, on failure one line. @return false when it is not usable, which leaves the
/// process without one, and when another one has been read before.
bool ReadConfigurationFile(const std::wstring& file, std::wstring& error);
bool ReadConfigurationText(const std::string& json, std::wstring& error);

}  // namespace refhost
