#include "reference_host/download/Transfer.h"

#include <mutex>

namespace refhost {

namespace {

std::mutex mutex;
TransferState current;

}  // namespace

TransferState CurrentTransfer() {
  const std::scoped_lock lock(mutex);
  return current;
}

void SetCurrentTransfer(const TransferState& state) {
  const std::scoped_lock lock(mutex);
  current = state;
}

}  // namespace refhost
