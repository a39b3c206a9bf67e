#include <json/value.h>

#include <optional>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "catalogue/JsonText.h"
#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "progress/DownloadJob.h"

namespace {

/// BITS's contexts for the remote file and the remote application: what an expired address shows up
/// as.
bool MayBeExpiredAddress(std::int32_t errorContext) {
  return errorContext == 5 || errorContext == 7;
}

/// @return the first address in the list for a name that contains `fileName`, other than `oldUrl`.
/// @param name out, that file's name.
std::optional<std::wstring> FindNewAddress(const Json::Value& fileList,
                                           const std::wstring& fileName, const std::wstring& oldUrl,
                                           std::wstring& name) {
  for (Json::ArrayIndex i = 0; i < fileList.size(); ++i) {
    name = WideText(Member(fileList[i], "name"));
    if (name.find(fileName) == std::wstring::npos) continue;
    const std::wstring url = WideText(Member(fileList[i], "downloadUrl"));
    if (url != oldUrl) return url;
  }
  return std::nullopt;
}

}  // namespace

void TolmarAgent::OnFileDownloadError(FileMap& files, ErrorDetails& error, bool& resumed) {
  logger.d(
      L"TolmarAgent: OnFileDownloadError:  Download failed due to the error. ErrorCode:(%d), "
      L"ErrorContext:(%d) and ErrorDescription:(%s)",
      error.errorCode, error.errorContext, error.errorDescription.c_str());
  resumed = false;
  if (!MayBeExpiredAddress(error.errorContext) || files.empty()) return;
  const std::wstring fileName = FileSystem::getFileName(files.begin()->second);
  if (!fileName.empty()) {
    logger.d(
        L"TolmarAgent: OnFileDownloadError: File details which encountered error Name: (%s), "
        L"Localpath: (%s)",
        fileName.c_str(), files.begin()->first.c_str());
  }
  if (!RenewAddress(fileName, files)) {
    logger.d(
        L"TolmarAgent: OnFileDownloadError: No try to resume download as this doesn't seem URL "
        L"expiry error.");
    return;
  }
  logger.d(
      L"TolmarAgent: OnFileDownloadError:  Call to resume download with new URL (%s) for file (%s)",
      files.begin()->second.c_str(), fileName.c_str());
  resumed = m_pDownloadAgent.load()->ResumeDownload(DownloadJobName, files);
}

bool TolmarAgent::RenewAddress(const std::wstring& fileName, FileMap& files) {
  const SoftwareModule module = GetCurrentInstallingModule();
  Json::Value reply;
  if (GetDownloadFiles(reply, module.l1FruPn, module.moduleFruPn) != ResultCode::Success) {
    return false;
  }
  std::wstring name;
  const std::optional<std::wstring> url =
      FindNewAddress(Member(reply, "fileList"), fileName, files.begin()->first, name);
  if (!url) return false;
  logger.d(
      L"TolmarAgent: OnFileDownloadError: Setting the new source URL (%s) to resume download for "
      L"file (%s).",
      url->c_str(), name.c_str());
  files.clear();
  files[fileName] = *url;
  return true;
}
