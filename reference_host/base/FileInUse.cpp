#include "reference_host/base/FileInUse.h"

#include <atomic>

namespace refhost {

namespace {

std::atomic<std::chrono::milliseconds> patience{std::chrono::seconds(10)};

}  // namespace

std::chrono::milliseconds FileInUsePatience() { return patience; }

void SetFileInUsePatience(std::chrono::milliseconds wanted) { patience = wanted; }

}  // namespace refhost
