#pragma once

#include <functional>
#include <string>

#include "host/Export.h"
#include "host/core/ZLTNotificationData.h"

/// The suite's notification bus. Notifications are delivered one after the other, in the order of
/// publishing, on the bus's own thread. Any thread may call; nothing throws. What a callback throws
/// is logged and dropped.
class ZLT_API ZLTPublisherSubscriber {
 public:
  /// Gets each notification, on the bus's thread.
  using Callback = std::function<void(ZLTNotificationData&)>;

  /// @return the one bus, never null.
  static ZLTPublisherSubscriber* GetInstance();

  /// @param callback in, what is called from then on. Its DLL stays loaded until `Unsubscribe`.
  /// @param replayLast in, true: the newest notification is delivered to the new subscriber too.
  /// @return the subscription's id, for `Unsubscribe`.
  std::wstring Subscribe(Callback callback, bool replayLast);

  /// After it returned no further call to the callback starts. A call that is running is not waited
  /// for, since the subscriber may need the caller to end it; its DLL stays loaded until it has
  /// ended. What work of the suite nobody can signal is given up when the last subscriber goes. An
  /// unknown id is ignored.
  /// @param id in, what `Subscribe` returned.
  void Unsubscribe(const std::wstring& id);

  /// Queues a notification for every subscriber.
  /// @param data in, the notification.
  /// @param timeoutMilliseconds in, how long to wait until it has been delivered to all; 0: do not
  /// wait.
  /// @return true when it was delivered to all (or no waiting was asked for).
  bool Publish(const ZLTNotificationData& data, unsigned int timeoutMilliseconds);

 private:
  ZLTPublisherSubscriber();
  ~ZLTPublisherSubscriber();
  ZLTPublisherSubscriber(const ZLTPublisherSubscriber&) = delete;
  ZLTPublisherSubscriber& operator=(const ZLTPublisherSubscriber&) = delete;

  struct State;
  State* m_pState;
};
