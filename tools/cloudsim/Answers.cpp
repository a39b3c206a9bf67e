#include "tools/cloudsim/Answers.h"

#include <algorithm>

#include "tools/cloudsim/Catalogue.h"
#include "tools/cloudsim/SignedUrls.h"

namespace cloudsim {
namespace {

constexpr int UnknownModule = 4;

Json::Value HasEntitlement(const Catalogue& catalogue, bool entitled) {
  const auto& titles = catalogue.titles;
  Json::Value answer = BareAnswer(0);
  answer["result"]["hasEntitlement"] = entitled && !titles.empty();
  answer["result"]["hasPreinstallSw"] =
      entitled && std::any_of(titles.begin(), titles.end(), [](const CatalogueTitle& title) {
        return title.preinstallSw.value_or(false);
      });
  return answer;
}

Json::Value ToJson(const CatalogueTitle& title) {
  Json::Value element;
  element["l1FruPn"] = title.l1FruPn;
  element["name"] = title.name;
  if (title.preinstallSw) element["preinstallSw"] = *title.preinstallSw;
  element["moduleList"] = Json::arrayValue;
  for (const CatalogueModule& module : title.modules) {
    Json::Value entry;
    entry["moduleFruPn"] = module.moduleFruPn;
    element["moduleList"].append(entry);
  }
  return element;
}

Json::Value Entitlement(const Catalogue& catalogue, bool entitled) {
  Json::Value answer = BareAnswer(0);
  Json::Value& list = answer["result"]["swList"] = Json::arrayValue;
  if (!entitled) return answer;
  for (const CatalogueTitle& title : catalogue.titles) list.append(ToJson(title));
  return answer;
}

Json::Value FileList(const CatalogueModule& module, const std::string& deviceId, SignedUrls& urls,
                     bool expiredUrls) {
  Json::Value answer = BareAnswer(0);
  Json::Value& list = answer["result"]["fileList"] = Json::arrayValue;
  for (const CatalogueFile& file : module.files) {
    Json::Value element;
    element["name"] = file.name;
    element["crc"] = file.crc;
    element["size"] = static_cast<Json::UInt64>(file.size);
    element["downloadUrl"] = urls.Make(file.urlPath, deviceId, expiredUrls);
    list.append(element);
  }
  return answer;
}

/// @return the member's text, empty when it is none: no part number is.
std::string TextOf(const Json::Value& parameters, const char* key) {
  return parameters[key].isString() ? parameters[key].asString() : "";
}

}  // namespace

std::string FaultOfBody(const std::string& type, const std::string& deviceId,
                        const Json::Value& body) {
  if (deviceId.empty()) return "the query names no deviceId";
  if (!body.isObject()) return "the body must be an object";
  if (body["type"] != type) return "the body's type is not " + type;
  const Json::Value& parameters = body["parameters"];
  if (!parameters.isObject()) return "parameters must be an object";
  if (parameters.isMember("deviceId") && parameters["deviceId"] != deviceId) {
    return "the body's deviceId is not the query's";
  }
  return "";
}

Json::Value AnswerTo(const ServiceRequest& request, const Catalogue& catalogue, SignedUrls& urls,
                     bool expiredUrls) {
  const bool entitled = catalogue.IsEntitled(request.deviceId);
  if (request.type == "hasEntitlement") return HasEntitlement(catalogue, entitled);
  if (request.type == "entitlement") return Entitlement(catalogue, entitled);
  if (request.type != "downloadRequest") return BareAnswer(0);  // A report.
  const CatalogueModule* module = catalogue.FindModule(TextOf(request.parameters, "l1FruPn"),
                                                       TextOf(request.parameters, "moduleFruPn"));
  // To a device without entitlement no module is known.
  if (!entitled || module == nullptr) return BareAnswer(UnknownModule);
  return FileList(*module, request.deviceId, urls, expiredUrls);
}

Json::Value BareAnswer(int code) {
  Json::Value answer;
  answer["result"]["code"] = code;
  return answer;
}

}  // namespace cloudsim
