#pragma once

#include <string>
#include <vector>

#include "reference_host/package/CabinetFile.h"
#include "reference_host/package/CabinetMember.h"

namespace refhost {

/// Lists all members without unpacking anything.
/// @throws std::runtime_error when the cabinet is malformed or continues in another one.
std::vector<CabinetMember> ListMembers(const CabinetFile& cabinet);

/// Unpacks all members below `folder` (existing, without a trailing backslash). The caller has
/// judged the names; this never opens an existing file, and writes no more than a member's listed
/// size. Blocks. What was written stays when it fails: the folder is the caller's.
/// @throws std::runtime_error when the cabinet is corrupt or a file cannot be written.
void UnpackMembers(const CabinetFile& cabinet, const std::wstring& folder);

}  // namespace refhost
