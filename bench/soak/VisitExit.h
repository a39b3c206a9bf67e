#pragma once

/// Exit codes of the process of a visit.
namespace VisitExit {
inline constexpr unsigned long Installed = 0;         ///< all is installed now, something by it
inline constexpr unsigned long Failed = 1;            ///< or it could not be told
inline constexpr unsigned long NothingToInstall = 2;  ///< all was there
}  // namespace VisitExit
