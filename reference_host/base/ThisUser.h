#pragma once

#include <string>

namespace refhost {

/// @return the security identifier of the account that this process runs as ("S-1-5-18" for
/// LocalSystem); empty when it is not to be found out.
const std::wstring& SidOfThisUser();

}  // namespace refhost
