#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "reference_host/base/RunningWork.h"

namespace refhost {

/// The newest JSON Web Token and what it was given for. Any thread.
class TokenCache {
 public:
  /// Several threads ask at the same time: the first exchanges, the others get what it got, which
  /// may be its failure. A stop of the suite lets go of who waits for another's exchange, which
  /// itself lasts for its time-outs at most.
  /// @param jwt out; untouched on failure. @return 0, or as `ExchangeToken`, or 12017 when stopped.
  unsigned long Get(const std::string& tokenUrl, const std::string& sessionToken, std::string& jwt);

  /// Drops the token when it stands in the headers of a request that the cloud has refused.
  void Drop(const std::wstring& headers);

 private:
  /// One exchange, shared by all that wait for it.
  struct Exchange {
    std::string sessionToken;
    RunningWork work{};
    bool done = false;
    unsigned long failure = 0;
    std::string jwt{};

    unsigned long Outcome(std::string& received) const;
  };

  bool IsFresh(const std::string& sessionToken) const;
  template <typename Condition>
  bool WaitFor(std::unique_lock<std::mutex>& lock, const RunningWork& work, Condition isMet);
  std::shared_ptr<const Exchange> Run(std::unique_lock<std::mutex>& lock,
                                      const std::string& tokenUrl, const std::string& sessionToken);

  std::mutex _mutex;
  std::condition_variable _changed;
  std::shared_ptr<const Exchange> _running;
  std::string _sessionToken;
  std::string _jwt;
  std::uint64_t _freshUntil = 0;  ///< milliseconds, as GetTickCount64 counts
  std::uint64_t _restUntil = 0;   ///< the same: no exchange begins before
};

}  // namespace refhost
