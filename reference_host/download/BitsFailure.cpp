#include "reference_host/download/BitsFailure.h"

#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

bool IsTransientStatus(std::uint32_t status) {
  return status == 408 || status == 429 || status >= 500;
}

/// @return null for codes that are not this service's own.
const wchar_t* OwnText(HRESULT code) {
  switch (code) {
    case TruncatedFile:
      return L"the file ended before its announced length";
    case OverlongFile:
      return L"the file is longer than announced";
    case OtherAnswer:
      return L"the server answered with something of another length than the file's";
    case TooLargeFile:
      return L"the file is larger than maxFileBytes allows";
    case NoBytesInTime:
      return L"no bytes arrived in time";
    case EndedByOthers:
      return L"the job was ended by somebody else";
    default:
      return nullptr;
  }
}

}  // namespace

BitsFailure FailureWith(BG_ERROR_CONTEXT context, HRESULT code, std::wstring localPath) {
  const wchar_t* own = OwnText(code);
  return {context, code, own != nullptr ? own : DescriptionOf(code), std::move(localPath)};
}

bool IsTransient(const BitsFailure& failure) {
  if (const auto status = HttpStatusOf(failure.code)) return IsTransientStatus(status);
  switch (failure.code) {
    case OtherAnswer:
      return true;
    case TooLargeFile:
    case NoBytesInTime:
      return false;
    default:
      return failure.context == BG_ERROR_CONTEXT_GENERAL_TRANSPORT ||
             failure.context == BG_ERROR_CONTEXT_UNKNOWN;
  }
}

}  // namespace refhost
