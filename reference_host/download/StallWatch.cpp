#include "reference_host/download/StallWatch.h"

#include <utility>

namespace refhost {

StallWatch::Verdict StallWatch::Look(Time waited, bool runs, std::uint64_t bytes) {
  if (std::exchange(_bytes, bytes) != bytes) {
    _silent = _held = Time{0};
    return Verdict::GoesOn;
  }
  (runs ? _silent : _held) += waited;
  if (_silent >= _silence) return Verdict::Silent;
  return _held >= _heldBack ? Verdict::HeldBack : Verdict::GoesOn;
}

}  // namespace refhost
