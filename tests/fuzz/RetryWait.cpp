// A retry's wait keeps its bounds, whatever it is asked for.

#include "reference_host/base/RetryWait.h"

#include <algorithm>
#include <bit>

#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{data, size};
  const int retry = input.Take<int>(), min = input.Take<int>(), max = input.Take<int>();
  const double random = std::bit_cast<double>(input.Take<std::uint64_t>());
  const double low = std::max(min, 1) * 1000.0, high = std::max(max * 1000.0, low);
  const unsigned int wait = refhost::RetryWaitMilliseconds(retry, min, max, random);
  Require(wait != 0xFFFFFFFF && wait <= high && wait >= std::min(low, 4294967294.0) - 1, "bounds");
  const unsigned int next =
      refhost::RetryWaitMilliseconds(std::min(retry, 2) + 1, min, max, random);
  Require(next >= wait, "a later retry waits no less");
  return 0;
}
