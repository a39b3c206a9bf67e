#pragma once

#include <cstdint>

namespace refhost {

/// What a failed transfer means to its owner and to who tries again. The numbers of the contexts
/// are BITS's.
struct FailureClass {
  enum Context : std::int32_t {
    Unknown = 1,
    Queue = 2,
    LocalFile = 4,
    RemoteFile = 5,
    Transport = 6
  };

  std::int32_t context = Unknown;
  bool transient = false;  ///< the same request may well succeed some time later
};

/// Classes a failure by its code. The context that BITS gives with it is of no use where the code
/// is known: a name that is not resolved comes as "remote file" as well as an address that has
/// expired, and only for the latter a new address helps. Pure.
/// @param context in, as it came. @param code in, an HRESULT.
FailureClass ClassOf(std::int32_t context, std::uint32_t code);

}  // namespace refhost
