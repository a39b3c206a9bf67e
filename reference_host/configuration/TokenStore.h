#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// The session token, kept by Windows' data protection for this machine, in a file of the suite's
/// folder: without the machine it is worth nothing, and on the machine the file is for
/// administrators and SYSTEM alone.

/// @return an empty text on success, else what is wrong (a phrase).
/// @param token in, not empty.
ZLT_API std::wstring KeepToken(const std::string& token);

/// Forgets it. @return an empty text when there is none afterwards, else what is wrong (a phrase).
ZLT_API std::wstring ForgetToken();

/// @param token out, empty when none is kept, or none that this process may read.
/// @return an empty text, or what is wrong with one that is kept, with the file's name.
std::wstring ReadKeptToken(std::string& token);

}  // namespace refhost
