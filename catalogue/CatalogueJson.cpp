#include "catalogue/CatalogueJson.h"

#include <json/value.h>

#include "catalogue/JsonText.h"

void CatalogueJson::ReadTitle(const Json::Value& element, SoftwarePackage& package) {
  package.l1FruPn = WideText(Member(element, "l1FruPn"));
  package.preinstallSw =
      element.isMember("preinstallSw") && Member(element, "preinstallSw").asBool();
}

SoftwareModule CatalogueJson::ReadModule(const Json::Value& element, const SoftwarePackage& title) {
  SoftwareModule module;
  module.l1FruPn = title.l1FruPn;
  module.moduleFruPn = WideText(Member(element, "moduleFruPn"));
  return module;
}

ModuleFile CatalogueJson::ReadFile(const Json::Value& element) {
  ModuleFile file;
  file.downloadUrl = WideText(Member(element, "downloadUrl"));
  file.size = Member(element, "size").asInt();
  file.crc = WideText(Member(element, "crc"));
  file.name = WideText(Member(element, "name"));
  return file;
}
