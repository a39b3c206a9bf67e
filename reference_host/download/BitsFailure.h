#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <bits.h>

#include <cstdint>
#include <string>

namespace refhost {

/// Why a transfer failed, in BITS's own terms.
struct BitsFailure {
  BG_ERROR_CONTEXT context = BG_ERROR_CONTEXT_UNKNOWN;
  HRESULT code = E_FAIL;
  std::wstring description;
  std::wstring localPath;  ///< of the failing file as the job knows it; empty when nobody says
};

/// What this service adds to BITS's own failures.
constexpr auto TruncatedFile = static_cast<HRESULT>(0x80070026);  ///< ERROR_HANDLE_EOF
constexpr auto OverlongFile = static_cast<HRESULT>(0x80070018);   ///< ERROR_BAD_LENGTH
constexpr auto OtherAnswer = static_cast<HRESULT>(0x8007000D);    ///< ERROR_INVALID_DATA
constexpr auto TooLargeFile = static_cast<HRESULT>(0x800700DF);   ///< ERROR_FILE_TOO_LARGE
constexpr auto FullDisk = static_cast<HRESULT>(0x80070070);       ///< ERROR_DISK_FULL
constexpr auto NoBytesInTime = static_cast<HRESULT>(0x800705B4);  ///< ERROR_TIMEOUT
constexpr auto EndedByOthers = static_cast<HRESULT>(0x800704C7);  ///< ERROR_CANCELLED

/// @return whether the same request may well succeed a moment later: the transport failed, the
/// server says that it is overloaded, or something else than the file came. An answer that refuses
/// the file does not count.
bool IsTransient(const BitsFailure& failure);

/// @param localPath in, of the failing file; empty when there is none.
/// @return the failure with a sentence for its code: those above, and `DescriptionOf`.
BitsFailure FailureWith(BG_ERROR_CONTEXT context, HRESULT code, std::wstring localPath = {});

}  // namespace refhost
