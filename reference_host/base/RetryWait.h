#pragma once

namespace refhost {

/// How long to wait before a request is sent again: equal jitter below a bound that grows
/// geometrically. For retry 0, 1, 2 the bound is min * (max / min) ^ (1/3, 2/3, 1); the wait lies
/// between half of the bound, but not less than min, and the bound. So a fleet of devices that
/// failed together comes back spread out, at every retry.
/// @param retry in, retries made so far; below 0 counts as 0, above 2 as 2.
/// @param minSeconds in, below 1 counts as 1. @param maxSeconds in, below min counts as min.
/// @param random in, where in the range the wait lies: 0 shortest, 1 longest; clamped.
/// @return milliseconds; never 0xFFFFFFFF, which waits take for "without end".
unsigned int RetryWaitMilliseconds(int retry, int minSeconds, int maxSeconds, double random);

}  // namespace refhost
