#include "catalogue/ModuleFile.h"

// Defaulted here and not in the class: user-provided, so `size` stays uninitialised in every form
// of default construction, as the header says.
ModuleFile::ModuleFile() = default;
ModuleFile::ModuleFile(const ModuleFile&) = default;
ModuleFile::ModuleFile(ModuleFile&&) noexcept = default;
ModuleFile& ModuleFile::operator=(const ModuleFile&) = default;
ModuleFile& ModuleFile::operator=(ModuleFile&&) noexcept = default;
ModuleFile::~ModuleFile() = default;
