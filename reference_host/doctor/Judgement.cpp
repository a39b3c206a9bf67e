#include "reference_host/doctor/Judgement.h"

#include <cstdlib>

#include "reference_host/causes/Causes.h"

namespace refhost {

namespace {

constexpr std::uint32_t FirstTransportError = 12000;
constexpr std::uint32_t FirstServerFault = 500;
constexpr std::uint32_t ProxyWantsLogon = 407;
constexpr std::uint32_t NoToken = 12152;  ///< the exchange's reply holds no token

/// A machine that sets its clock by the network's is never off by more.
constexpr std::int64_t ClockWarnSeconds = 60;
/// What others commonly allow for; beyond it certificates that were just issued are not valid yet.
constexpr std::int64_t ClockFailSeconds = 300;

/// A package lies beside what is unpacked from it, and what it installs comes on top: this does for
/// packages of some 500 MB. `tolmarctl plan` knows the sizes.
constexpr std::uint64_t SpaceWarnBytes = 2'000'000'000;
/// Less will not do for a small package, the logs and the system itself.
constexpr std::uint64_t SpaceFailBytes = 100'000'000;
constexpr std::uint64_t Megabyte = 1'000'000;

Finding FailureBy(const Cause& cause, std::uint32_t number) {
  return {"", Health::Fail, std::string(cause.happened) + " (" + std::to_string(number) + ")",
          cause.remedy};
}

}  // namespace

Finding JudgeEndpoint(std::uint32_t number) {
  if (number >= FirstTransportError) return FailureBy(*CauseOfCode(number), number);
  if (number == ProxyWantsLogon) {
    return {"", Health::Fail, "A proxy wants a logon (HTTP status 407).",
            "Let the service's address through without one: none is ever sent."};
  }
  return {"", Health::Ok, "answered with HTTP status " + std::to_string(number), ""};
}

Finding JudgeToken(std::uint32_t number) {
  if (number == 0) return {"", Health::Ok, "the session token was exchanged", ""};
  if (number == NoToken) return FailureBy(*FindCause("reply.unreadable"), number);
  const Cause* cause = CauseOfCode(number);
  if (number >= FirstServerFault && cause != nullptr) return FailureBy(*cause, number);
  return {"", Health::Fail, "The session token was refused (" + std::to_string(number) + ").",
          "Check sessionToken and tokenUrl in the configuration, and the machine's clock."};
}

Finding JudgeClock(std::int64_t secondsAhead) {
  const std::int64_t off = std::abs(secondsAhead);
  const std::string found = off == 0
                                ? "as the service's"
                                : std::to_string(off) + " s " +
                                      (secondsAhead > 0 ? "ahead of" : "behind") + " the service's";
  if (off <= ClockWarnSeconds) return {"", Health::Ok, found, ""};
  return {"", off > ClockFailSeconds ? Health::Fail : Health::Warn, found,
          "Set the machine's clock: w32tm /resync."};
}

Finding JudgeSpace(std::uint64_t bytes) {
  const std::string found = std::to_string(bytes / Megabyte) + " MB are free";
  if (bytes >= SpaceWarnBytes) return {"", Health::Ok, found, ""};
  return {"", bytes < SpaceFailBytes ? Health::Fail : Health::Warn, found,
          "Free some space: tolmarctl plan tells how much an installation needs."};
}

Finding JudgeScriptPolicy(std::optional<std::uint32_t> enableScripts,
                          const std::string& executionPolicy) {
  constexpr const char* Remedy =
      "Change the group policy \"Turn on Script Execution\", under Windows PowerShell.";
  if (!enableScripts) return {"", Health::Ok, "there; no policy holds scripts back", ""};
  if (*enableScripts == 0 || executionPolicy == "Restricted") {
    return {"", Health::Fail, "a policy forbids all scripts", Remedy};
  }
  if (executionPolicy == "AllSigned") {
    return {"", Health::Fail, "a policy allows signed scripts only", Remedy};
  }
  return {"", Health::Ok, "there; the policy is " + executionPolicy, ""};
}

}  // namespace refhost
