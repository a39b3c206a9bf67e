#include <json/value.h>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "catalogue/CatalogueJson.h"
#include "catalogue/JsonText.h"
#include "host/common/Text.h"

unsigned long TolmarAgent::InstallEntitledSoftware(Json::Value& document, HANDLE cancelHandle,
                                                   bool preinstallOnly) {
  const OperationLog operation(L"InstallEntitledSoftware");
  _downloadAgentLock.EnterLock();
  logger.d(L"TolmarAgent::InstallEntitledSoftware: Acquired downloadAgent lock");
  _callerHandle = cancelHandle;
  unsigned long result = ResultCode::Success;
  try {
    const Json::Value titles = Member(document, "swList");
    for (Json::ArrayIndex i = 0; i < titles.size(); ++i) {
      SoftwarePackage package;
      CatalogueJson::ReadTitle(titles[i], package);
      if (preinstallOnly && !package.preinstallSw) continue;
      SetCurrentInstallingSoftware(package);
      result = FetchModules(Member(titles[i], "moduleList"), package, cancelHandle, result);
      if (result != ResultCode::Success) continue;
      SetCurrentInstallingSoftware(package);
      result = InstallTitle(document["swList"][i], package, cancelHandle);
    }
  } catch (...) {
    // Meant: the download-agent lock stays held and no exit line is written.
    return ResultCode::BadDocument;
  }
  _downloadAgentLock.ExitLock();
  operation.Exit();
  return result;
}

unsigned long TolmarAgent::FetchModules(const Json::Value& moduleList, SoftwarePackage& package,
                                        HANDLE cancelHandle, unsigned long before) {
  unsigned long result = before;
  for (Json::ArrayIndex j = 0; j < moduleList.size(); ++j) {
    SoftwareModule module = CatalogueJson::ReadModule(moduleList[j], package);
    result = GetModuleFileListNInstallationStatus(module, false, cancelHandle);
    if (result != ResultCode::Success) return result;
    package.modules.push_back(std::move(module));
  }
  return result;
}

unsigned long TolmarAgent::InstallTitle(Json::Value& title, SoftwarePackage& package,
                                        HANDLE cancelHandle) {
  title["progress"] = "0";
  const unsigned long result = DownloadNInstallSoftwarePackage(package, cancelHandle);
  const bool installed = result == ResultCode::Success;
  title["status"] = ZLT::String::UTF16ToUTF8(StatusWord::ForInstalled(installed));
  logger.d(installed ? L"Download and install success" : L"Download and install failed");
  logger.d(L"Download and install code=%d for AppId=%s", static_cast<int>(result),
           package.l1FruPn.c_str());
  return result;
}
