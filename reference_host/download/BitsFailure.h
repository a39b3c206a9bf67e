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

/// What this service adds to BITS's own failures. FailureClass.cpp says what each means.
constexpr auto TruncatedFile = static_cast<HRESULT>(0x80070026);  ///< ERROR_HANDLE_EOF
constexpr auto OverlongFile = static_cast<HRESULT>(0x80070018);   ///< ERROR_BAD_LENGTH
constexpr auto OtherAnswer = static_cast<HRESULT>(0x8007000D);    ///< ERROR_INVALID_DATA
constexpr auto TooLargeFile = static_cast<HRESULT>(0x800700DF);   ///< ERROR_FILE_TOO_LARGE
constexpr auto FullDisk = static_cast<HRESULT>(0x80070070);       ///< ERROR_DISK_FULL
constexpr auto NoBytesInTime = static_cast<HRESULT>(0x800705B4);  ///< ERROR_TIMEOUT
constexpr auto NotRunInTime = static_cast<HRESULT>(0x8007041D);   ///< ERROR_SERVICE_REQUEST_TIMEOUT
constexpr auto EndedByOthers = static_cast<HRESULT>(0x800704C7);  ///< ERROR_CANCELLED
constexpr auto TooLongAName = static_cast<HRESULT>(0x800700CE);   ///< ERROR_FILENAME_EXCED_RANGE
constexpr auto MissingFile = static_cast<HRESULT>(0x80070002);    ///< ERROR_FILE_NOT_FOUND

/// @return whether the same request may well succeed some time later. An answer that refuses the
/// file does not count.
bool IsTransient(const BitsFailure& failure);

/// @return the failure in the context that its code stands for.
BitsFailure Classed(BitsFailure failure);

/// @param localPath in, of the failing file; empty when there is none.
/// @return the failure with a sentence for its code: those above, and `DescriptionOf`.
BitsFailure FailureWith(BG_ERROR_CONTEXT context, HRESULT code, std::wstring localPath = {});

}  // namespace refhost
