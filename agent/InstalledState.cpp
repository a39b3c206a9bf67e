#include <json/value.h>

#include <exception>
#include <thread>
#include <vector>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "catalogue/CatalogueJson.h"
#include "catalogue/JsonText.h"
#include "host/common/Text.h"

namespace {

/// Threads that are all joined when the scope ends, also when a further one could not be started.
class JoinedThreads {
 public:
  JoinedThreads() = default;
  ~JoinedThreads() {
    for (std::thread& thread : _threads) thread.join();
  }
  JoinedThreads(const JoinedThreads&) = delete;
  JoinedThreads& operator=(const JoinedThreads&) = delete;

  template <class Body>
  void Start(Body body) {
    _threads.emplace_back(std::move(body));
  }

 private:
  std::vector<std::thread> _threads;
};

}  // namespace

unsigned long TolmarAgent::GetEntitledSoftwareStatus(Json::Value& entitled, void* handle,
                                                     bool preinstallOnly) {
  const OperationLog operation(L"GetEntitledSoftwareStatus");
  _callerHandle = handle;
  unsigned long result = ResultCode::Success;
  try {
    const Json::Value titles = Member(entitled, "swList");
    JoinedThreads threads;
    for (int i = 0; i < static_cast<int>(titles.size()); ++i) {
      threads.Start([this, &entitled, handle, i, preinstallOnly] {
        GetEntitledSoftwareStatusThreadRtn(&entitled, handle, i, preinstallOnly);
      });
    }
  } catch (const std::exception&) {
    result = ResultCode::BadDocument;
  }
  operation.Exit();
  return result;
}

void TolmarAgent::GetEntitledSoftwareStatusThreadRtn(Json::Value* entitled, void* handle, int index,
                                                     bool preinstallOnly) {
  if (entitled == nullptr) return;
  SoftwarePackage package;
  bool installed = false;
  try {
    installed = CheckTitle(*entitled, index, preinstallOnly, handle, package);
  } catch (const std::exception&) {
    logger.e(
        L"TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Exception occured while Json parsing");
  }
  logger.d(L"TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Exit for %s. Name=%s, Status=%s",
           package.l1FruPn.c_str(), package.name.c_str(),
           installed ? L"Installed" : L"Not Installed");
}

bool TolmarAgent::CheckTitle(Json::Value& entitled, int index, bool preinstallOnly, void* handle,
                             SoftwarePackage& package) {
  // Read through a constant view: other threads work on other elements of the same document.
  const Json::Value& titles = Member(entitled, "swList");
  if (index < 0 || index >= static_cast<int>(titles.size())) return false;
  const Json::Value& title = titles[index];
  CatalogueJson::ReadTitle(title, package);
  Json::Value& answer = entitled["swList"][index];
  if (preinstallOnly && !package.preinstallSw) {
    answer["status"] = "UnKnown";
    return false;
  }
  logger.d(L"TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Entry for %s",
           package.l1FruPn.c_str());
  const bool installed = AreModulesInstalled(Member(title, "moduleList"), package, handle);
  answer["progress"] = "0";
  answer["status"] = ZLT::String::UTF16ToUTF8(StatusWord::ForInstalled(installed));
  return installed;
}

bool TolmarAgent::AreModulesInstalled(const Json::Value& moduleList, SoftwarePackage& package,
                                      void* handle) {
  for (Json::ArrayIndex i = 0; i < moduleList.size(); ++i) {
    SoftwareModule& module =
        package.modules.emplace_back(CatalogueJson::ReadModule(moduleList[i], package));
    const unsigned long result = GetModuleFileListNInstallationStatus(module, true, handle);
    if (result != ResultCode::Success || module.status != StatusWord::Installed) return false;
  }
  return true;  // A title without modules counts as installed.
}
