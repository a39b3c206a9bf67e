#include "reference_host/download/BitsFailure.h"

#include "reference_host/download/FailureClass.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

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
    case NotRunInTime:
      return L"BITS did not run the job in time";
    case EndedByOthers:
      return L"the job was ended by somebody else";
    case TooLongAName:
      return L"BITS takes no address over 2200 characters, none with a part over 260, and no local "
             L"path over 260";
    default:
      return nullptr;
  }
}

FailureClass MeaningOf(const BitsFailure& failure) {
  return ClassOf(failure.context, static_cast<std::uint32_t>(failure.code));
}

}  // namespace

BitsFailure FailureWith(BG_ERROR_CONTEXT context, HRESULT code, std::wstring localPath) {
  const wchar_t* own = OwnText(code);
  return {context, code, own != nullptr ? own : DescriptionOf(code), std::move(localPath)};
}

bool IsTransient(const BitsFailure& failure) { return MeaningOf(failure).transient; }

BitsFailure Classed(BitsFailure failure) {
  failure.context = static_cast<BG_ERROR_CONTEXT>(MeaningOf(failure).context);
  return failure;
}

}  // namespace refhost
