#pragma once

#include <filesystem>
#include <vector>

#include "reference_host/package/CabinetMember.h"
#include "tools/tolmarpack/Package.h"

namespace tolmarpack {

/// Packs files; the same files under the same names make the same cabinet, byte for byte, on the
/// same system. @param cabinet in, replaced once the new one is whole.
/// @throws std::runtime_error when a file cannot be read or packed.
void WriteCabinet(const std::vector<SourceFile>& files, const std::filesystem::path& cabinet);

/// @return the members of a cabinet, nothing of which has been judged.
/// @throws std::runtime_error when it is none.
std::vector<refhost::CabinetMember> ListCabinet(const std::filesystem::path& cabinet);

/// Unpacks a cabinet whose members have been judged. @param folder in, empty.
/// @throws std::runtime_error when it is damaged.
void UnpackCabinet(const std::filesystem::path& cabinet, const std::filesystem::path& folder);

}  // namespace tolmarpack
