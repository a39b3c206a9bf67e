// A component as the agent is one: it hands callbacks of its own to the suite.

#include <windows.h>

#include <atomic>
#include <string>

#include "host/common/DownloadAgent.h"
#include "host/core/ZLTPublisherSubscriber.h"

namespace {

std::wstring subscription;
std::atomic<int> notifications{0};
std::atomic<int> steps{0};
DownloadAgent* downloads = nullptr;

/// Topic 1 is taken note of; any other holds the bus's thread in this DLL until the event that its
/// state is the handle of.
void OnNotification(ZLTNotificationData& data) {
  ++notifications;
  if (data.getTopicId() == 1) return;
  const auto event = reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(data.getEventState()));
  WaitForSingleObject(event, 20000);
  ++notifications;
}

}  // namespace

extern "C" {

__declspec(dllexport) void GuestStart() {
  subscription = ZLTPublisherSubscriber::GetInstance()->Subscribe(
      [](ZLTNotificationData& data) { OnNotification(data); }, false);
}

/// @return 1 when the file came and the callbacks of this DLL were called.
__declspec(dllexport) int GuestDownload(const wchar_t* url, const wchar_t* path) {
  downloads = DownloadAgent::GetInstance(
      L"Guest", [](std::wstring, GUID, bool, DownloadAgent::FileMap&) { ++steps; },
      [](std::wstring, DownloadProgressDetail&, std::vector<DownloadProgressDetail>&) {
        return true;
      },
      {});
  GUID id{};
  const int before = steps;
  const bool done = downloads->DownloadFiles(L"Guest", false, {{url, path}}, L"", id, nullptr, 0);
  return done && steps > before ? 1 : 0;
}

__declspec(dllexport) int GuestNotifications() { return notifications; }

__declspec(dllexport) void GuestCleanUp() {
  ZLTPublisherSubscriber::GetInstance()->Unsubscribe(subscription);
  if (downloads != nullptr) downloads->CleanUp();
}

}  // extern "C"
