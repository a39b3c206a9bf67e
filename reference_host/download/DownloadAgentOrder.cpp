#include "reference_host/download/DownloadAgentOrder.h"

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/files/FolderOwner.h"
#include "reference_host/files/MemberName.h"

namespace refhost {

namespace {

bool StartsWith(const std::wstring& path, const std::wstring& folder) {
  const int length = static_cast<int>(folder.size());
  return path.size() > folder.size() &&
         CompareStringOrdinal(path.c_str(), length, folder.c_str(), length, TRUE) == CSTR_EQUAL;
}

}  // namespace

std::wstring RefusalOfFiles(const DownloadAgent::FileMap& files, const std::wstring& folder) {
  if (files.empty()) return {};
  const std::wstring refusal = RefusalOfFolder(folder);
  if (!refusal.empty()) {
    return files.begin()->second + L" is refused, its folder cannot be used: " + refusal;
  }
  MemberNames names;
  for (const auto& [url, path] : files) {
    if (!IsAllowedUrl(url)) {
      return WithoutQuery(url) + L" is refused: neither https nor a loopback address";
    }
    if (!StartsWith(path, folder + L"\\")) {
      return path + L" is refused: it is not below the download folder";
    }
    const std::string fault = names.Add(path.substr(folder.size() + 1));
    if (!fault.empty()) return path + L" is refused: " + ZLT::String::UTF8ToUTF16(fault);
  }
  return {};
}

}  // namespace refhost
