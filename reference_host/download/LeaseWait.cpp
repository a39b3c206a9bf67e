#include "reference_host/download/LeaseWait.h"

#include <chrono>

#include "host/common/Log.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/InstallationLease.h"

namespace refhost {

namespace {

constexpr DWORD PollMs = 200;

}  // namespace

bool WaitForLease(const std::wstring& folder, HANDLE stopEvent, HANDLE cancelHandle) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::seconds(Settings().leaseWaitSeconds);
  const HANDLE handles[] = {stopEvent, cancelHandle};
  const DWORD count = cancelHandle == nullptr ? 1 : 2;
  for (std::wstring told;;) {
    std::wstring why;
    const InstallationLease::Answer answer = InstallationLease::Take(folder, why);
    if (answer == InstallationLease::Answer::Taken) return true;
    if (answer == InstallationLease::Answer::Refused || Clock::now() >= deadline) {
      ZLT::g_log.e(L"DownloadAgent: nothing is installed, for want of the machine's lease: %s",
                   why.c_str());
      return false;
    }
    if (why != told) ZLT::g_log.d(L"DownloadAgent: waits for the lease: %s", why.c_str());
    told = why;
    if (WaitForMultipleObjects(count, handles, FALSE, PollMs) != WAIT_TIMEOUT) return false;
  }
}

}  // namespace refhost
