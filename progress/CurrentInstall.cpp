#include <json/value.h>

#include <exception>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StateGuard.h"
#include "agent/TolmarAgent.h"
#include "catalogue/JsonText.h"
#include "host/common/Text.h"

SoftwarePackage TolmarAgent::GetCurrentInstallingSoftware() {
  const StateGuard guard(_stateLock);
  SoftwarePackage copy = _currentSoftware;
  copy.progress = _currentProgress;
  return copy;
}

SoftwareModule TolmarAgent::GetCurrentInstallingModule() {
  const StateGuard guard(_stateLock);
  return _currentModule;
}

void TolmarAgent::SetCurrentInstallingSoftware(SoftwarePackage& software) {
  const StateGuard guard(_stateLock);
  _currentSoftware = software;
  _currentProgress = software.progress;
}

void TolmarAgent::SetCurrentInstallingModule(SoftwareModule& module) {
  const StateGuard guard(_stateLock);
  _currentModule = module;
}

void TolmarAgent::SetCurrentInstallingSoftwareStatus(const wchar_t* status) {
  const StateGuard guard(_stateLock);
  _currentSoftware.status = status;
}

DWORD TolmarAgent::GetInstallEntitledSoftwareStatus(Json::Value& status) {
  unsigned long result = ResultCode::Nothing;
  try {
    if (FillCurrentStatus(status)) result = ResultCode::Success;
  } catch (const std::exception&) {
    return ResultCode::BadDocument;
  }
  logger.d(L"GetInstallEntitledSoftwareStatus: code=%d n status=%s for AppId=%s",
           static_cast<int>(result), GetCurrentInstallingSoftware().status.c_str(),
           GetCurrentInstallingSoftware().l1FruPn.c_str());
  return static_cast<DWORD>(result);
}

bool TolmarAgent::FillCurrentStatus(Json::Value& status) {
  const Json::Value& titles = Member(status, "swList");
  if (!titles.isNull() && !titles.isArray()) throw Json::LogicError("swList is no array");
  for (Json::ArrayIndex i = 0; i < titles.size(); ++i) {
    const std::wstring l1FruPn = WideText(Member(titles[i], "l1FruPn"));
    const SoftwarePackage current = GetCurrentInstallingSoftware();
    if (l1FruPn != current.l1FruPn) continue;
    Json::Value& element = status["swList"][i];
    element["status"] = ZLT::String::UTF16ToUTF8(current.status);
    element["progress"] = std::to_string(current.progress);
    return true;
  }
  return false;
}
