#include "reference_host/download/LeaseWait.h"

#include <chrono>

#include "host/common/Log.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/InstallationLease.h"
#include "reference_host/log/Event.h"

namespace refhost {

namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD PollMs = 200;

void TellWait(Clock::time_point begin, const std::wstring& holder, const char* cause) {
  Event("lease.waited").With("reason", holder).With("cause", cause).Since(begin).Write();
}

}  // namespace

bool WaitForLease(const std::wstring& folder, HANDLE stopEvent, HANDLE cancelHandle) {
  const Clock::time_point begin = Clock::now();
  const auto deadline = begin + std::chrono::seconds(Settings().leaseWaitSeconds);
  const HANDLE handles[] = {stopEvent, cancelHandle};
  const DWORD count = cancelHandle == nullptr ? 1 : 2;
  for (std::wstring told;;) {
    std::wstring why;
    const InstallationLease::Answer answer = InstallationLease::Take(folder, why);
    if (answer == InstallationLease::Answer::Taken) {
      if (!told.empty()) TellWait(begin, told, "");
      return true;
    }
    if (answer == InstallationLease::Answer::Refused || Clock::now() >= deadline) {
      ZLT::g_log.e(L"DownloadAgent: nothing is installed, for want of the machine's lease: %s",
                   why.c_str());
      const bool isHeld = answer == InstallationLease::Answer::Held;
      TellWait(begin, why, isHeld ? "device.lease" : "device.folder");
      return false;
    }
    if (why != told) ZLT::g_log.d(L"DownloadAgent: waits for the lease: %s", why.c_str());
    told = why;
    if (WaitForMultipleObjects(count, handles, FALSE, PollMs) != WAIT_TIMEOUT) {
      TellWait(begin, why, "download.stopped");
      return false;
    }
  }
}

}  // namespace refhost
