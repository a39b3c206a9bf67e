#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// @return the full path of the program that this process runs.
ZLT_API std::wstring OwnProgram();

}  // namespace refhost
