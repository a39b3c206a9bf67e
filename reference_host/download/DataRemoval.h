#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// Removes what the suite keeps on this machine when it is taken away: transfers of this account,
/// the download folder and those beside it, and what lies in the suite's folder (lease, kept token,
/// the service's state). Nobody may work meanwhile. Blocks; what others hold is waited for as
/// configured.
/// @param logsToo in, false: what holds logs in the suite's folder stays. Logs that are configured
/// to go elsewhere always stay.
/// @return an empty text on success, else what is left (for a person).
ZLT_API std::wstring RemoveData(bool logsToo);

}  // namespace refhost
