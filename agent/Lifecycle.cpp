#include <utility>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "host/common/DownloadAgent.h"
#include "host/common/Utility.h"
#include "host/core/DeviceIdAgent.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "host/session/Tessary.h"

std::atomic<DownloadAgent*> TolmarAgent::m_pDownloadAgent{nullptr};

TolmarAgent* TolmarAgent::GetInstance() {
  static TolmarAgent instance;
  return &instance;
}

TolmarAgent::TolmarAgent() {
  _hStopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  Initialize();
}

TolmarAgent::~TolmarAgent() {
  CloseHandle(_hStopEvent);
  // A worker that nobody joined ends the process here: the host forgot CleanUp.
  delete m_pPreinstallThread.load();
}

unsigned long TolmarAgent::Initialize() {
  OpenServices();
  const bool logOpen = ZLT::utility::InitLog(logger, L"TolmarAgent.log", 4);
  if (_deviceId.empty()) {
    ReadIdentity();
    const bool endpointChanged = AdoptEndpoint();
    if (IsRegistered()) AskAtStartUp(endpointChanged);
  }
  _subscriptionId = ZLTPublisherSubscriber::GetInstance()->Subscribe(
      [this](ZLTNotificationData& data) { OnZLTNotification(data); }, false);
  return logOpen ? ResultCode::Success : ResultCode::Nothing;
}

void TolmarAgent::CleanUp() {
  ZLTPublisherSubscriber::GetInstance()->Unsubscribe(_subscriptionId);
  SetEvent(_hStopEvent);
  if (DownloadAgent* downloads = m_pDownloadAgent) downloads->CleanUp();
  if (std::thread* worker = m_pPreinstallThread) worker->join();
}

void TolmarAgent::OpenServices() {
  m_pDeviceIdAgent = DeviceIdAgent::GetInstance(DeviceIdentityService::GetInstance());
  m_pTokenBroker = Tessary::GetInstance();
}

void TolmarAgent::ReadIdentity() {
  m_pDeviceIdAgent->GetDeviceID(_deviceId);
  m_pDeviceIdAgent->GetDeviceID(_deviceIdBytes, &_deviceIdLength, 0);
}

void TolmarAgent::AskAtStartUp(bool endpointChanged) {
  unsigned char entitled = 0;
  HasEntitledSoftware(entitled);
  logger.d(L"TolmarAgent.Init: HasEntitledSoftware returned %d preIsntallSw=%d", int{entitled},
           int{_hasPreinstallSw});
  // The worker asks the service itself; what starts it is an endpoint that was not asked before.
  if (endpointChanged) InstallPreinstallSoftware();
}

bool TolmarAgent::IsRegistered() const {
  return m_pTokenBroker != nullptr && m_pTokenBroker->IsRegistered() != 0;
}
