#include "tools/common/AgentControl.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "agent/DeviceConfigure.h"
#include "agent/TolmarAgent.h"
#include "host/common/EpUrlProvider.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "reference_host/base/Handle.h"

void TellEndpoint() {
  std::wstring base, realm;
  EpUrlProvider::GetInstance()->GetBaseUrl(base);
  EpUrlProvider::GetInstance()->GetRealm(realm);
  TolmarAgent::SetBaseUri(base);
  TolmarAgent::SetRealm(realm);
}

TolmarAgent* StartAgent(HANDLE cancel) {
  static std::atomic<TolmarAgent*> agent{nullptr};
  const HANDLE started = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::thread([started] {
    agent = TolmarAgent::GetInstance();
    SetEvent(started);
  }).detach();
  const HANDLE either[] = {started, cancel};
  WaitForMultipleObjects(2, either, FALSE, INFINITE);
  return agent;
}

void AnnounceConfiguration(HANDLE cancel) {
  ZLTPublisherSubscriber& bus = *ZLTPublisherSubscriber::GetInstance();
  // It lives as long as somebody may still set it.
  const auto delivered =
      std::make_shared<const refhost::Handle>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const std::wstring id =
      bus.Subscribe([delivered](ZLTNotificationData&) { SetEvent(delivered->Get()); }, false);
  bus.Publish(ZLTNotificationData(false, DeviceTopic, DeviceConfigured), 0);
  const HANDLE either[] = {delivered->Get(), cancel};
  WaitForMultipleObjects(2, either, FALSE, INFINITE);
  bus.Unsubscribe(id);
}
