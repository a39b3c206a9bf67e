#include <windows.h>
// Behind windows.h, whose types it needs.
#include <json/value.h>
#include <winhttp.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "agent/TolmarAgent.h"
#include "bench/common/Time.h"
#include "bench/delivery/Parts.h"
#include "bench/delivery/StraightLine.h"
#include "host/common/EpUrlProvider.h"
#include "reference_host/base/Url.h"

namespace {

struct Closer {
  void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, Closer>;

/// The exchange by nothing but WinHTTP: one session, one connection that is kept, one request a
/// call.
class BareExchange {
 public:
  BareExchange() {
    refhost::ParseUrl(StraightLine::UrlOf(L"hasEntitlement"), _url);
    _session.reset(WinHttpOpen(L"BareExchange", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0));
    _connection.reset(WinHttpConnect(_session.get(), _url.host.c_str(), _url.port, 0));
  }

  void Run() {
    const Handle request(WinHttpOpenRequest(_connection.get(), L"POST", _url.pathAndQuery.c_str(),
                                            nullptr, nullptr, nullptr, WINHTTP_FLAG_SECURE));
    const auto length = static_cast<DWORD>(_body.size());
    DWORD received = 0, count = 0;
    if (WinHttpSendRequest(request.get(), _headers.c_str(), static_cast<DWORD>(-1), _body.data(),
                           length, length, 0) &&
        WinHttpReceiveResponse(request.get(), nullptr)) {
      char buffer[4096];
      while (WinHttpReadData(request.get(), buffer, sizeof buffer, &count) && count != 0) {
        received += count;
      }
    }
    if (received == 0) throw std::runtime_error("no answer by WinHTTP");
  }

 private:
  std::wstring _headers = StraightLine::Headers();
  std::string _body = StraightLine::DeviceBody(L"hasEntitlement");
  refhost::Url _url;
  Handle _session;
  Handle _connection;
};

/// @return the median of so many calls, in milliseconds.
double MedianOf(int calls, const std::function<void()>& call) {
  std::vector<double> times(static_cast<std::size_t>(calls));
  for (double& time : times) time = MillisecondsOf(call);
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

}  // namespace

void MeasureFirstExchange(const Order&) {
  PrintSample("floor", MillisecondsOf([] {
                StraightLine::Post(L"hasEntitlement", StraightLine::DeviceBody(L"hasEntitlement"));
              }));
}

void MeasureReading(const Order&) {
  PrintSample("calls", MillisecondsOf([] {
                std::wstring base, realm;
                EpUrlProvider::GetInstance()->GetBaseUrl(base);
                EpUrlProvider::GetInstance()->GetRealm(realm);
                TolmarAgent::SetBaseUri(base);
                TolmarAgent::SetRealm(realm);
                Json::Value titles;
                const unsigned long code = TolmarAgent::GetInstance()->GetEntitledSoftware(titles);
                if (code != 0) throw std::runtime_error("the query failed");
                TolmarAgent::GetInstance()->CleanUp();
              }));
}

void MeasureExchange(const Order& order) {
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  BareExchange bare;
  const auto ask = [&] {
    unsigned char entitled = 0;
    const unsigned long code = agent.HasEntitledSoftware(entitled);
    if (code != 0) throw std::runtime_error("the query ended with " + std::to_string(code));
  };
  ask();
  bare.Run();
  Compare(
      order.rounds, [&] { return MedianOf(order.calls, ask); },
      [&] { return MedianOf(order.calls, [&] { bare.Run(); }); });
}
