#include "bench/polls/Fleet.h"

#include <algorithm>

#include "bench/common/Dice.h"

namespace polls {
namespace {

using service::Time;

Time FirstPoll(Policy policy, Time planned, Time now, const service::Pace& pace, Dice& dice) {
  const bool startsAtOnce = policy == Policy::AskAtStart || policy == Policy::JitterOnly;
  if (startsAtOnce) return now;
  return service::FirstRun(policy == Policy::Ours ? planned : 0, now, pace, dice.Roll());
}

Time NextPoll(Policy policy, Time began, service::Pace pace, Dice& dice) {
  if (policy == Policy::AskAtStart) pace.spread = 0;
  return service::RunAfter(began, pace, dice.Roll());
}

/// Polls of one host from a start to the next one, or to the end.
/// @return what it had planned then.
Time Run(const Scenario& scenario, Policy policy, Time poll, Time end, Dice& dice,
         std::vector<std::uint32_t>& seconds) {
  for (; poll < end; poll = NextPoll(policy, poll, scenario.pace, dice)) {
    ++seconds[static_cast<std::size_t>(poll)];
  }
  return poll;
}

}  // namespace

std::vector<std::uint32_t> Simulate(const Scenario& scenario, Policy policy) {
  const Time end = Time{scenario.days} * 24 * 3600;
  Time reboot = end;
  if (scenario.rebootHour != 0) reboot = Time{scenario.rebootHour} * 3600;
  std::vector<std::uint32_t> seconds(static_cast<std::size_t>(end));
  Dice dice(scenario.seed);
  for (int host = 0; host < scenario.hosts; ++host) {
    const auto late = static_cast<Time>(dice.Roll() * scenario.bootSpreadSeconds);
    const Time first = FirstPoll(policy, 0, late, scenario.pace, dice);
    const Time planned = Run(scenario, policy, first, std::min(end, reboot + late), dice, seconds);
    if (reboot + late >= end) continue;
    const Time again = FirstPoll(policy, planned, reboot + late, scenario.pace, dice);
    Run(scenario, policy, again, end, dice, seconds);
  }
  return seconds;
}

}  // namespace polls
