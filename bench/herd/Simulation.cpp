#include "bench/herd/Simulation.h"

#include <algorithm>
#include <utility>

#include "bench/common/Dice.h"

namespace herd {
namespace {

constexpr std::int64_t Second = 1000;

struct Device {
  std::int64_t first = 0;  ///< time of its very first request
  std::int64_t call = 0;   ///< start of the call that it is in
  unsigned int wait = 0;   ///< the wait before the newest request of the call
  int retry = 0;
};

struct Request {
  std::int64_t time;
  std::uint32_t device;
};

class Simulation {
 public:
  Simulation(const Scenario& scenario, const Policy& policy)
      : _scenario(scenario), _policy(policy), _dice(scenario.seed), _devices(scenario.devices) {}

  Outcome Run() {
    SendFirstRequests();
    for (std::size_t second = 0; second < _agenda.size(); ++second) {
      // Moved out: answering adds to the agenda.
      std::vector<Request> requests = std::move(_agenda[second]);
      std::sort(requests.begin(), requests.end(), [](const Request& a, const Request& b) {
        return std::pair(a.time, a.device) < std::pair(b.time, b.device);
      });
      Answer(requests, static_cast<int>(second));
    }
    Measure();
    return std::move(_outcome);
  }

 private:
  void SendFirstRequests() {
    for (std::uint32_t i = 0; i < _scenario.devices; ++i) {
      _devices[i].first = _devices[i].call = _dice.MillisecondsBelow(_scenario.arrivalSeconds);
      Send(i, _devices[i].first);
    }
  }

  void Send(std::uint32_t device, std::int64_t time) {
    const auto second = static_cast<std::size_t>(time / Second);
    if (second >= _agenda.size()) _agenda.resize(second + 1);
    _agenda[second].push_back({time, device});
  }

  /// Those that come first within the second are served, up to the capacity.
  void Answer(const std::vector<Request>& requests, int second) {
    const bool up = second >= _scenario.outageSeconds;
    const std::size_t served =
        up ? std::min(requests.size(), static_cast<std::size_t>(_scenario.capacity)) : 0;
    std::int64_t repeated = 0;
    for (std::size_t i = 0; i < requests.size(); ++i) {
      if (requests[i].time != _devices[requests[i].device].first) ++repeated;
      if (i < served) {
        Serve(requests[i]);
      } else {
        Refuse(requests[i]);
      }
    }
    _outcome.requests.push_back(static_cast<std::uint32_t>(requests.size()));
    _outcome.served.push_back(static_cast<std::uint32_t>(served));
    _outcome.total += static_cast<std::int64_t>(requests.size());
    _outcome.peak = std::max(_outcome.peak, repeated);
    if (up) _outcome.peakUp = std::max(_outcome.peakUp, repeated);
  }

  void Serve(const Request& request) {
    const Device& device = _devices[request.device];
    _waits.push_back(request.time - device.first);
    _outcome.allServed = std::max(_outcome.allServed, request.time);
    if (device.call == device.first) ++_outcome.servedByRetries;
  }

  void Refuse(const Request& request) {
    Device& device = _devices[request.device];
    if (device.retry == MaxRetries) {
      CallAgain(request);
      return;
    }
    device.wait = _policy.wait(device.retry, device.wait, _dice.Roll());
    ++device.retry;
    Send(request.device, request.time + device.wait);
  }

  /// The agent has given up. Its host calls it again at the next tick of a timer that has run since
  /// the last call began.
  void CallAgain(const Request& request) {
    Device& device = _devices[request.device];
    const std::int64_t period = _scenario.pollSeconds * Second;
    device.call += ((request.time - device.call) / period + 1) * period;
    device.call += _dice.MillisecondsBelow(_scenario.pollSpreadSeconds);
    device.wait = 0;
    device.retry = 0;
    Send(request.device, device.call);
  }

  void Measure() {
    std::sort(_waits.begin(), _waits.end());
    _outcome.medianWait = _waits[(_waits.size() - 1) / 2];
    _outcome.p99Wait = _waits[(_waits.size() - 1) * 99 / 100];
  }

  const Scenario& _scenario;
  const Policy& _policy;
  Dice _dice;
  std::vector<Device> _devices;
  std::vector<std::vector<Request>> _agenda;  ///< requests to come, by second
  std::vector<std::int64_t> _waits;
  Outcome _outcome;
};

}  // namespace

Outcome Simulate(const Scenario& scenario, const Policy& policy) {
  return Simulation(scenario, policy).Run();
}

}  // namespace herd
