#include <string>

#include "bench/load/Stop.h"
#include "bench/micro/QuietHost.h"

/// load_bench_native THREADS: the same stop with the native lane's events, on a host suite that
/// costs next to nothing.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Quiet().status = 503;
  StopWaitingThreads(std::stoi(argv[1]), [] { return Quiet().waits.load(); });
  return 0;
}
