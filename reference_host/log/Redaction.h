#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// @return `text` fit for a log: the query of every http and https URL in it (which may be a
/// signature that anybody could fetch the file with) and every JSON Web Token left out. Pure.
ZLT_API std::wstring WithoutSecrets(const std::wstring& text);

}  // namespace refhost
