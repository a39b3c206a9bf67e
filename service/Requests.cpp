#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "service/RequestBody.h"
#include "service/RequestKind.h"

VRXResponse TolmarAgent::RequestHasEntitlement() {
  static constexpr RequestKind kind{L"RequestHasEntitlement", L"hasEntitlement",
                                    ResultCode::NoTokenHasEntitlement, false};
  return SendRequest(kind, [&](RequestBody& body) { body.Text(L"deviceId", _deviceId); });
}

VRXResponse TolmarAgent::RequestEntitlement() {
  static constexpr RequestKind kind{L"RequestEntitlement", L"entitlement",
                                    ResultCode::NoTokenEntitlement, false};
  return SendRequest(kind, [&](RequestBody& body) { body.Text(L"deviceId", _deviceId); });
}

VRXResponse TolmarAgent::RequestDownload(std::wstring l1FruPn, std::wstring moduleFruPn) {
  static constexpr RequestKind kind{L"RequestDownload", L"downloadRequest",
                                    ResultCode::NoTokenDownload, false};
  return SendRequest(kind, [&](RequestBody& body) {
    body.Text(L"deviceId", _deviceId).Text(L"l1FruPn", l1FruPn).Text(L"moduleFruPn", moduleFruPn);
  });
}

VRXResponse TolmarAgent::RequestDownloadProgress(std::wstring l1FruPn, std::wstring moduleFruPn,
                                                 int action, std::wstring message,
                                                 std::wstring fileName, std::wstring /*unused*/,
                                                 int progress, std::wstring custDeviceDate) {
  static constexpr RequestKind kind{L"RequestDownloadProgress", L"downloadProgress",
                                    ResultCode::DownloadProgressFailed, true};
  return SendRequest(kind, [&](RequestBody& body) {
    body.Text(L"l1FruPn", l1FruPn)
        .Text(L"moduleFruPn", moduleFruPn)
        .Number(L"action", action)
        .Text(L"message", message)
        .Text(L"fileName", fileName)
        .Number(L"progress", progress)
        .Text(L"custDeviceDate", custDeviceDate);
  });
}

VRXResponse TolmarAgent::RequestInstallProgress(std::wstring l1FruPn, std::wstring moduleFruPn,
                                                int action, std::wstring message,
                                                std::wstring custDeviceDate) {
  static constexpr RequestKind kind{L"RequestInstallProgress", L"installProgress",
                                    ResultCode::InstallProgressFailed, true};
  return SendRequest(kind, [&](RequestBody& body) {
    body.Text(L"l1FruPn", l1FruPn)
        .Text(L"moduleFruPn", moduleFruPn)
        .Number(L"action", action)
        .Text(L"message", message)
        .Text(L"custDeviceDate", custDeviceDate);
  });
}
