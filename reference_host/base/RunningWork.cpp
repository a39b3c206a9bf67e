#include "reference_host/base/RunningWork.h"

#include <atomic>

namespace refhost {

namespace {

std::atomic<unsigned int> stops{0};

}  // namespace

RunningWork::RunningWork() : _stopsBefore(stops) {}

bool RunningWork::IsToStop() const { return stops != _stopsBefore; }

void RunningWork::StopAll() { ++stops; }

}  // namespace refhost
