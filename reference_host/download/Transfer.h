#pragma once

#include <cstdint>

#include "host/Export.h"

namespace refhost {

/// How far the files are that this process is fetching for a module.
struct TransferState {
  std::uint64_t bytes = 0;
  std::uint64_t totalBytes = 0;  ///< 0: none is being fetched, or their length is not known yet
};

/// @return the newest known state. Any thread; does not block.
ZLT_API TransferState CurrentTransfer();

/// Called by the download only.
void SetCurrentTransfer(const TransferState& state);

}  // namespace refhost
