#pragma once

#include "reference_host/configuration/Layers.h"

namespace refhost {

/// Where the machine's administrators set, by group policy or a management tool, what stands above
/// every file: values of this key of HKEY_LOCAL_MACHINE, named as the keys are.
inline constexpr const wchar_t* PolicyKey = L"SOFTWARE\\Policies\\Tolmar";

/// Where the installer keeps what it was told, below every file: as the policies.
inline constexpr const wchar_t* SetupKey = L"SOFTWARE\\Tolmar\\Settings";

/// @param source in, Policy or Setup.
/// @return what is set there now; no values when there is no such key.
Layer ReadRegistry(Source source);

}  // namespace refhost
