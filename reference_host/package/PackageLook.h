#pragma once

#include "host/Export.h"
#include "reference_host/package/CabinetMember.h"
#include "reference_host/package/CabinetPolicy.h"

namespace refhost {

/// A look at a package without installing it, for programs that judge packages before they are
/// rolled out. Each operation opens the package, blocks, and throws std::runtime_error when it is
/// not one whole cabinet. Any thread.

/// @return what a look at its signature found on this machine.
ZLT_API SignatureFindings LookAtSignature(const std::wstring& package);

ZLT_API std::vector<CabinetMember> LookAtMembers(const std::wstring& package);

/// Unpacks it below `folder` (existing, without a trailing backslash), whoever has signed it. The
/// caller has judged its members.
ZLT_API void UnpackForALook(const std::wstring& package, const std::wstring& folder);

}  // namespace refhost
