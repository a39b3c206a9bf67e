#pragma once

#include <json/forwards.h>

#include "catalogue/SoftwarePackage.h"

/// Reads the service's JSON into catalogue records. Each throws Json::Exception when a member has
/// the wrong type.
namespace CatalogueJson {

/// Reads an element of "swList": identifier and pre-install mark, not the modules.
/// @param element in. @param package out, what was read before a failure stays in it.
void ReadTitle(const Json::Value& element, SoftwarePackage& package);

/// @param element in, of "moduleList". @param title in, the module's.
/// @return the module, still without files.
SoftwareModule ReadModule(const Json::Value& element, const SoftwarePackage& title);

/// @param element in, of "fileList". @return the file.
ModuleFile ReadFile(const Json::Value& element);

}  // namespace CatalogueJson
