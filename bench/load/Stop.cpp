#include "bench/load/Stop.h"

#include <json/value.h>
#include <windows.h>

#include <atomic>
#include <stdexcept>

#include "agent/TolmarAgent.h"
#include "bench/common/Samples.h"
#include "bench/common/Time.h"
#include "bench/load/WaitingThreads.h"

namespace {

constexpr unsigned int PatienceMs = 60000, PollMs = 2;
constexpr DWORD SettleMs = 200;  ///< from telling that a wait begins until it has begun

void Print(const char* name, const std::vector<double>& times) {
  for (const double time : times) PrintSample(name, time);
}

/// Starts the threads, each once the one before it waits: they use one connection to the service,
/// and Wine fails some of the TLS handshakes when dozens are made at once.
/// @param work in, what each runs, given its number from 0. @param waits in, how many wait.
void StartAll(WaitingThreads& all, int threads, const std::function<void(int)>& work,
              const std::function<int()>& waits) {
  for (int i = 0; i < threads; ++i) {
    all.Start([work, i] { work(i); });
    if (!WaitUntil([&] { return waits() > i; }, PatienceMs, PollMs)) {
      throw std::runtime_error("the threads do not get to wait");
    }
  }
  Sleep(SettleMs);
}

std::vector<double> StopBareThreads(int threads) {
  const HANDLE stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::atomic<int> waiting = 0;
  WaitingThreads all;
  const auto wait = [&](int) {
    ++waiting;
    WaitForSingleObject(stop, INFINITE);
  };
  StartAll(all, threads, wait, [&] { return waiting.load(); });
  std::vector<double> times = all.EndBy([&] { SetEvent(stop); });
  CloseHandle(stop);
  return times;
}

std::vector<double> StopAgent(int threads, const std::function<int()>& retryWaits) {
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  WaitingThreads all;
  const auto ask = [&](int number) {
    Json::Value reply;
    if (number % 2 == 0) {
      agent.GetEntitledSoftware(reply);
    } else {
      agent.GetDownloadFiles(reply, L"T-001", L"M-001");
    }
  };
  StartAll(all, threads, ask, retryWaits);
  return all.EndBy([&] { agent.CleanUp(); });
}

}  // namespace

void StopWaitingThreads(int threads, const std::function<int()>& retryWaits) {
  Print("floor", StopBareThreads(threads));
  Print("agent", StopAgent(threads, retryWaits));
}
