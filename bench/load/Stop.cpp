#include "bench/load/Stop.h"

#include <json/value.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <stdexcept>

#include "agent/TolmarAgent.h"
#include "bench/load/WaitingThreads.h"

namespace {

constexpr int PatienceMs = 60000, PollMs = 20;
constexpr DWORD SettleMs = 200;  ///< from telling that a wait begins until it has begun

void Print(const char* name, const std::vector<double>& times) {
  for (const double time : times) std::printf("%s %.4f\n", name, time);
}

void WaitUntil(int threads, const std::function<int()>& count) {
  for (int waited = 0; count() < threads; waited += PollMs) {
    if (waited > PatienceMs) throw std::runtime_error("the threads do not get to wait");
    Sleep(PollMs);
  }
  Sleep(SettleMs);
}

std::vector<double> StopBareThreads(int threads) {
  const HANDLE stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::atomic<int> waiting = 0;
  WaitingThreads all(threads, [&](int) {
    ++waiting;
    WaitForSingleObject(stop, INFINITE);
  });
  WaitUntil(threads, [&] { return waiting.load(); });
  std::vector<double> times = all.EndBy([&] { SetEvent(stop); });
  CloseHandle(stop);
  return times;
}

std::vector<double> StopAgent(int threads, const std::function<int()>& retryWaits) {
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  WaitingThreads all(threads, [&](int number) {
    Json::Value reply;
    if (number % 2 == 0) {
      agent.GetEntitledSoftware(reply);
    } else {
      agent.GetDownloadFiles(reply, L"T-001", L"M-001");
    }
  });
  WaitUntil(threads, retryWaits);
  return all.EndBy([&] { agent.CleanUp(); });
}

}  // namespace

void StopWaitingThreads(int threads, const std::function<int()>& retryWaits) {
  Print("floor", StopBareThreads(threads));
  Print("agent", StopAgent(threads, retryWaits));
}
