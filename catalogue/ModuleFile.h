#pragma once

#include <cstdint>
#include <string>

#include "catalogue/Export.h"

/// One downloadable file of a module. A value: copied and moved freely, one thread at a time.
class TOLMAR_API ModuleFile {
 public:
  ModuleFile();  ///< Leaves `size` uninitialised: every producer assigns it before the record is
                 ///< used.
  ModuleFile(const ModuleFile&);
  ModuleFile(ModuleFile&&) noexcept;
  ModuleFile& operator=(const ModuleFile&);
  ModuleFile& operator=(ModuleFile&&) noexcept;
  ~ModuleFile();

  std::wstring name;         ///< file name as the service gives it
  std::wstring crc;          ///< check value of the file, as text
  std::wstring downloadUrl;  ///< where the file is fetched from
  std::int32_t size;         ///< bytes
  std::wstring localPath;    ///< for the host's use; the agent leaves it empty
};
