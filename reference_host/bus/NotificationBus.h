#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/core/ZLTNotificationData.h"
#include "reference_host/base/ModulePin.h"

namespace refhost {

/// Delivers notifications to subscribers, one after the other, on a thread of its own. Lives as
/// long as the process. Any thread; the callbacks run without any lock of the bus, so they may call
/// it.
class NotificationBus {
 public:
  using Callback = std::function<void(ZLTNotificationData&)>;

  /// @return the subscription's id. With `replayLast` the newest notification is delivered to this
  /// subscriber, once.
  std::wstring Subscribe(Callback callback, bool replayLast);

  /// When nobody is left, the suite's work that nobody can signal is told to stop.
  void Unsubscribe(const std::wstring& id);

  /// @return true when the notification was delivered within the time-out, or at once when that is
  /// 0. On the bus's own thread waiting would be for itself: false at once.
  bool Publish(const ZLTNotificationData& data, std::chrono::milliseconds timeout);

 private:
  using Id = std::uint64_t;

  /// A subscriber whose DLL stays loaded as long as it is called.
  struct Subscriber {
    explicit Subscriber(Callback function)
        : module(AddressInModuleOf(function)), callback(std::move(function)) {}

    ModuleHold module;
    Callback callback;
  };

  /// One notification on its way; without a receiver it is for every subscriber.
  struct Delivery {
    ZLTNotificationData data;
    std::optional<Id> receiver;
    bool done = false;
  };

  void StartThread();
  void Run();
  void Deliver(const Delivery& delivery, std::unique_lock<std::mutex>& lock);
  std::vector<Id> ReceiversOf(const Delivery& delivery) const;
  void Call(const Callback& callback, ZLTNotificationData data) const;
  bool IsPublicationQueued() const;

  std::mutex _mutex;
  std::condition_variable _queued;
  std::condition_variable _delivered;
  std::deque<std::shared_ptr<Delivery>> _queue;
  std::map<Id, std::shared_ptr<Subscriber>> _subscribers;  ///< in the order of subscribing
  std::optional<ZLTNotificationData> _newest;              ///< whose delivery has begun
  Id _lastId = 0;
  std::thread::id _threadId;
};

}  // namespace refhost
