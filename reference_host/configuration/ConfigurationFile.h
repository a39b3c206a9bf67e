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

/// @return the name of the file that the process was told to read; empty when it was told none.
ZLT_API std::wstring ConfigurationFileName();

/// @return why there is no usable configuration, empty when there is one.
const std::wstring& ConfigurationError();

}  // namespace refhost
