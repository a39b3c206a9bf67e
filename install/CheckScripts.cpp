#include <json/value.h>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "catalogue/CatalogueJson.h"
#include "catalogue/FileKind.h"
#include "catalogue/JsonText.h"
#include "host/common/FileSystem.h"
#include "host/common/HttpRequest.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Utility.h"
#include "install/DownloadFolder.h"
#include "install/ScriptCommand.h"

namespace {

/// Appends the reply's files to the module. @return the check script (the last ".ps1" file), or
/// null.
const ModuleFile* ReadFileList(const Json::Value& fileList, SoftwareModule& module) {
  const ModuleFile* script = nullptr;
  for (Json::ArrayIndex i = 0; i < fileList.size(); ++i) {
    const ModuleFile& file = module.files.emplace_back(CatalogueJson::ReadFile(fileList[i]));
    if (IsScript(file.name)) script = &file;
  }
  return script;
}

}  // namespace

unsigned long TolmarAgent::GetModuleFileListNInstallationStatus(SoftwareModule& module,
                                                                bool checkInstallState,
                                                                HANDLE cancelHandle) {
  const OperationLog operation(L"GetModuleFileListNInstallationStatus");
  Json::Value reply;
  const unsigned long result = GetDownloadFiles(reply, module.l1FruPn, module.moduleFruPn);
  module.files.clear();
  if (result == ResultCode::Success) {
    const ModuleFile* script = ReadFileList(Member(reply, "fileList"), module);
    if (script != nullptr && checkInstallState) RunCheckScript(module, *script, cancelHandle);
  }
  operation.Exit();
  return result;
}

void TolmarAgent::RunCheckScript(SoftwareModule& module, const ModuleFile& script,
                                 HANDLE cancelHandle) {
  const std::wstring path = DownloadFolder::LocalPath(script.name);
  DownloadFolder::Create();
  logger.d(L"TolmarAgent::GetModuleFileListNInstallationStatus: Trying to download file now");
  const std::wstring headers = HeaderBlock(GetJwtFromServer());
  if (!FileSystem::fileExists(path) &&
      !ZLT::HttpRequest::DownloadFile(script.downloadUrl, path, headers)) {
    return;
  }
  logger.d(L"TolmarAgent::GetModuleFileListNInstallationStatus: launching install checked now");
  const bool installed = ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(
                             ScriptCommand::Check(path), ZLT::utility::GetZltKivDownloadPath(),
                             true, cancelHandle) != 0;
  module.status = StatusWord::ForInstalled(installed);
}
