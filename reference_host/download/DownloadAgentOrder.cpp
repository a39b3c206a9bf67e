#include "reference_host/download/DownloadAgentOrder.h"

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/files/FolderOwner.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/MemberName.h"

namespace refhost {

namespace {

std::wstring RefusalOfFile(const std::wstring& url, const std::wstring& path,
                           const std::wstring& folder, MemberNames& names) {
  if (!IsAllowedUrl(url)) {
    return WithoutQuery(url) + L" is refused: neither https nor a loopback address";
  }
  if (!IsBelow(path, folder)) return path + L" is refused: it is not below the download folder";
  const std::string fault = names.Add(path.substr(folder.size() + 1));
  return fault.empty() ? L"" : path + L" is refused: " + ZLT::String::UTF8ToUTF16(fault);
}

}  // namespace

std::map<std::wstring, std::wstring> RefusalsOfFiles(const DownloadAgent::FileMap& files,
                                                     const std::wstring& folder) {
  std::map<std::wstring, std::wstring> refusals;
  MemberNames names;
  for (const auto& [url, path] : files) {
    const std::wstring refusal = RefusalOfFile(url, path, folder, names);
    if (!refusal.empty()) refusals[url] = refusal;
  }
  return refusals;
}

std::wstring RefusalOfFiles(const DownloadAgent::FileMap& files, const std::wstring& folder) {
  if (files.empty()) return {};
  const std::wstring refusal = RefusalOfFolder(folder);
  if (!refusal.empty()) {
    return files.begin()->second + L" is refused, its folder cannot be used: " + refusal;
  }
  const auto refusals = RefusalsOfFiles(files, folder);
  return refusals.empty() ? L"" : refusals.begin()->second;
}

}  // namespace refhost
