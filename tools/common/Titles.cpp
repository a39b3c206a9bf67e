#include "tools/common/Titles.h"

#include <algorithm>

std::string TextIn(const Json::Value& object, const char* name) {
  const bool isText = object.isObject() && object[name].isString();
  return isText ? object[name].asString() : std::string();
}

bool IsTitle(const Json::Value& title) {
  if (!title.isObject()) return false;
  const Json::Value& modules = title["moduleList"];
  return title["l1FruPn"].isString() && !title["name"].isObject() && !title["name"].isArray() &&
         title["preinstallSw"].isConvertibleTo(Json::booleanValue) &&
         title["status"].isConvertibleTo(Json::stringValue) &&
         (modules.isNull() || modules.isArray()) &&
         std::all_of(modules.begin(), modules.end(),
                     [](const Json::Value& module) { return module.isObject(); });
}

bool HasTitles(const Json::Value& document) {
  if (!document.isObject()) return false;
  const Json::Value& titles = document["swList"];
  return titles.isArray() && !titles.empty() && std::all_of(titles.begin(), titles.end(), IsTitle);
}
