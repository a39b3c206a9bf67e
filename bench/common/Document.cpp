#include "bench/common/Document.h"

#include <json/value.h>

void AddTitle(Json::Value& document, const std::string& title,
              const std::vector<std::string>& modules) {
  Json::Value& element = document["swList"].append(Json::objectValue);
  element["l1FruPn"] = title;
  for (const std::string& module : modules) {
    element["moduleList"].append(Json::objectValue)["moduleFruPn"] = module;
  }
}
