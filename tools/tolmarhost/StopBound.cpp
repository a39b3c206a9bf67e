#include "tools/tolmarhost/StopBound.h"

#include <algorithm>

namespace service {

unsigned int StopBoundMs(const refhost::Configuration& settings) {
  constexpr unsigned int LongestConnectSeconds = 15;  // for the name, and for the connection
  constexpr unsigned int ProcessEndSeconds = 5;
  constexpr unsigned int PauseSeconds = 1;
  constexpr unsigned int RoomSeconds = 4;
  const unsigned int step = settings.requestTimeoutSeconds;
  const unsigned int answer = 2 * std::min(step, LongestConnectSeconds) + 2 * step;
  const unsigned int seconds = 2 * answer + settings.cancelledCheckGraceSeconds +
                               ProcessEndSeconds + PauseSeconds + RoomSeconds;
  return 1000 * seconds;
}

}  // namespace service
