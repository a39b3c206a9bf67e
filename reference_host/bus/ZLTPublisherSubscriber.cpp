#include "host/core/ZLTPublisherSubscriber.h"

#include "reference_host/bus/NotificationBus.h"

struct ZLTPublisherSubscriber::State {
  refhost::NotificationBus bus;
};

ZLTPublisherSubscriber::ZLTPublisherSubscriber() : m_pState(new State) {}

ZLTPublisherSubscriber::~ZLTPublisherSubscriber() { delete m_pState; }

// Never destroyed: threads may publish and deliver to the last moment of the process.
ZLTPublisherSubscriber* ZLTPublisherSubscriber::GetInstance() {
  static auto* const instance = new ZLTPublisherSubscriber;
  return instance;
}

std::wstring ZLTPublisherSubscriber::Subscribe(Callback callback, bool replayLast) {
  return m_pState->bus.Subscribe(std::move(callback), replayLast);
}

void ZLTPublisherSubscriber::Unsubscribe(const std::wstring& id) { m_pState->bus.Unsubscribe(id); }

bool ZLTPublisherSubscriber::Publish(const ZLTNotificationData& data,
                                     unsigned int timeoutMilliseconds) {
  return m_pState->bus.Publish(data, std::chrono::milliseconds(timeoutMilliseconds));
}
