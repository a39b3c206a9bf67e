#pragma once

#include <list>
#include <string>

#include "catalogue/Export.h"
#include "catalogue/ModuleFile.h"

/// One installable module of a title. A value; a moved-from module is empty and can be used again.
class TOLMAR_API SoftwareModule {
 public:
  SoftwareModule();
  SoftwareModule(const SoftwareModule&);
  SoftwareModule(SoftwareModule&&);
  SoftwareModule& operator=(const SoftwareModule&);
  SoftwareModule& operator=(SoftwareModule&&);
  ~SoftwareModule();

  std::wstring l1FruPn;         ///< part number of the title that the module belongs to
  std::wstring moduleFruPn;     ///< the module's part number
  std::list<ModuleFile> files;  ///< in the order received
  std::wstring status;          ///< "installed", "not installed" or empty (not checked)
};
