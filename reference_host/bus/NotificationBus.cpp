#include "reference_host/bus/NotificationBus.h"

#include <algorithm>
#include <exception>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/base/RunningWork.h"

namespace refhost {

std::wstring NotificationBus::Subscribe(Callback callback, bool replayLast) {
  auto subscriber = std::make_shared<Subscriber>(std::move(callback));
  const std::scoped_lock lock(_mutex);
  const Id id = ++_lastId;
  _subscribers[id] = std::move(subscriber);
  // What is still queued is newer and reaches the new subscriber anyway.
  if (replayLast && _newest && !IsPublicationQueued()) {
    StartThread();
    _queue.push_back(std::make_shared<Delivery>(Delivery{*_newest, id}));
    _queued.notify_one();
  }
  return std::to_wstring(id);
}

void NotificationBus::Unsubscribe(const std::wstring& id) {
  std::shared_ptr<Subscriber> gone;  // its DLL is let go behind the lock
  const std::scoped_lock lock(_mutex);
  const auto found = std::find_if(_subscribers.begin(), _subscribers.end(), [&](const auto& entry) {
    return std::to_wstring(entry.first) == id;
  });
  if (found == _subscribers.end()) return;
  gone = std::move(found->second);
  _subscribers.erase(found);
  if (_subscribers.empty()) RunningWork::StopAll();
}

bool NotificationBus::Publish(const ZLTNotificationData& data, std::chrono::milliseconds timeout) {
  std::unique_lock lock(_mutex);
  StartThread();
  const auto delivery = std::make_shared<Delivery>(Delivery{data, std::nullopt});
  _queue.push_back(delivery);
  _queued.notify_one();
  if (timeout.count() == 0) return true;
  if (std::this_thread::get_id() == _threadId) return false;
  return _delivered.wait_for(lock, timeout, [&] { return delivery->done; });
}

void NotificationBus::StartThread() {
  if (_threadId != std::thread::id()) return;
  PinModule();
  std::thread thread([this] { Run(); });
  _threadId = thread.get_id();
  thread.detach();  // it ends with the process
}

void NotificationBus::Run() {
  std::unique_lock lock(_mutex);
  for (;;) {
    _queued.wait(lock, [this] { return !_queue.empty(); });
    const std::shared_ptr<Delivery> delivery = _queue.front();
    _queue.pop_front();
    Deliver(*delivery, lock);
    delivery->done = true;
    _delivered.notify_all();
  }
}

void NotificationBus::Deliver(const Delivery& delivery, std::unique_lock<std::mutex>& lock) {
  if (!delivery.receiver) _newest = delivery.data;
  for (const Id id : ReceiversOf(delivery)) {
    const auto found = _subscribers.find(id);
    if (found == _subscribers.end()) continue;  // gone since the delivery began
    std::shared_ptr<Subscriber> subscriber = found->second;
    lock.unlock();
    Call(subscriber->callback, delivery.data);
    subscriber.reset();  // its DLL may be unloaded here
    lock.lock();
  }
}

std::vector<NotificationBus::Id> NotificationBus::ReceiversOf(const Delivery& delivery) const {
  if (delivery.receiver) return {*delivery.receiver};
  std::vector<Id> ids;
  for (const auto& [id, callback] : _subscribers) ids.push_back(id);
  return ids;
}

void NotificationBus::Call(const Callback& callback, ZLTNotificationData data) const try {
  callback(data);
} catch (const std::exception& exception) {
  ZLT::g_log.e(L"Notification bus: a subscriber threw: %s",
               ZLT::String::UTF8ToUTF16(exception.what()).c_str());
} catch (...) {
  ZLT::g_log.e(L"Notification bus: a subscriber threw something");
}

bool NotificationBus::IsPublicationQueued() const {
  return std::any_of(_queue.begin(), _queue.end(),
                     [](const auto& delivery) { return !delivery->receiver; });
}

}  // namespace refhost
