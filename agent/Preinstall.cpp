#include <json/value.h>

#include <exception>
#include <string>
#include <system_error>

#include "agent/AgentLog.h"
#include "agent/DeviceConfigure.h"
#include "agent/ResultCodes.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "catalogue/JsonText.h"
#include "host/common/Text.h"

namespace {

bool IsNotInstalled(const std::wstring& status) {
  const std::wstring word = StatusWord::NotInstalled;
  return status.size() == word.size() && ZLT::String::CaseInsesitiveFind(status, word);
}

}  // namespace

void TolmarAgent::OnZLTNotification(ZLTNotificationData& data) {
  logger.d(L"TolmarAgent: OnZLTNotification: Invoked");
  if (!data.isVRXNotification()) {
    const std::uint32_t topic = data.getTopicId();
    const std::uint32_t state = data.getEventState();
    ZLT::g_log.d(
        L"TolmarAgent::OnZLTNotification: ZLT Notification received; topicID: %d, eventState: %d",
        topic, state);
    if (topic == DeviceTopic && state == DeviceConfigured) HandleDeviceConfigure();
  }
  logger.d(L"TolmarAgent: OnZLTNotification: Exit");
}

void TolmarAgent::HandleDeviceConfigure() {
  logger.d(L"TolmarAgent: OnZLTNotification: DEVICE_CONFIGURE rcvd");
  if (!AdoptEndpointIfUnasked() || !IsRegistered()) return;
  unsigned char entitled = 0;
  HasEntitledSoftware(entitled);
  logger.d(L"TolmarAgent.OnZLTNotification: HasEntitledSoftware returned %d preinstallSw=%d",
           int{entitled}, int{_hasPreinstallSw});
  InstallPreinstallSoftware();
}

void TolmarAgent::InstallPreinstallSoftware() try {
  if (!_hasPreinstallSw) return;
  // Meant: an earlier worker's thread object is neither joined nor freed, CleanUp joins the newest
  // only.
  m_pPreinstallThread = new std::thread([this] { PreinstallSoftwareThrdRtn(); });
} catch (const std::system_error&) {
  // No thread is to be had: the titles wait for the next start, the agent works on without.
}

void TolmarAgent::PreinstallSoftwareThrdRtn() {
  logger.d(L"PreinstallSoftwareThrdRtn: Entry");
  Json::Value entitled;
  if (GetEntitledSoftware(entitled) == ResultCode::Success &&
      GetEntitledSoftwareStatus(entitled, _hStopEvent, true) == ResultCode::Success) {
    InstallMissingPreinstallTitles(entitled);
  }
  logger.d(L"PreinstallSoftwareThrdRtn: Exit");
}

void TolmarAgent::InstallMissingPreinstallTitles(Json::Value& entitled) try {
  for (Json::ArrayIndex i = 0; i < Member(entitled, "swList").size(); ++i) {
    const Json::Value& title = Member(entitled, "swList")[i];
    const std::wstring status = WideText(title["status"]);
    if (!title["preinstallSw"].asBool()) continue;
    if (IsNotInstalled(status)) {
      logger.d(L"PreinstallSoftwareThrdRtn: Invoking InstallEntitledSoftware");
      InstallEntitledSoftware(entitled, _hStopEvent, true);
    } else {
      logger.d(L"PreinstallSoftwareThrdRtn: Software is already installed");
    }
  }
} catch (const std::exception&) {
  // A list of the wrong shape ends the worker quietly, as any other failure of its queries does.
}
