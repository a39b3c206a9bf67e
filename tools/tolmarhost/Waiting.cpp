#include "tools/tolmarhost/Waiting.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "host/session/Tessary.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/log/Event.h"
#include "tools/common/Titles.h"
#include "tools/tolmarhost/Passing.h"

namespace waiting {

namespace {

using ZLT::String;
namespace fs = std::filesystem;

constexpr const wchar_t* JobName = L"TolmarHost";
/// It is in nobody's way: BITS gives way to what uses the network in the foreground.
constexpr long NormalPriority = 2;

std::wstring DownloadFolder() { return ZLT::utility::GetZltKivDownloadPath(); }

/// A part number may hold anything. @return a folder's name made of it.
std::wstring FolderOf(const Json::Value& title) {
  Json::Value named;
  named["fileList"].append(title["l1FruPn"]);
  return refhost::WaitingFolder() + L"\\" + String::UTF8ToUTF16(service::VersionOfLists({named}));
}

bool IsScript(const std::string& name) {
  return String::CaseInsesitiveFind(String::UTF8ToUTF16(name), L".ps1");
}

/// @return address to path in the download folder.
DownloadAgent::FileMap PackagesIn(const std::vector<Json::Value>& lists) {
  DownloadAgent::FileMap files;
  for (const Json::Value& list : lists) {
    if (!list["fileList"].isArray()) continue;
    for (const Json::Value& file : list["fileList"]) {
      const std::string name = TextIn(file, "name"), address = TextIn(file, "downloadUrl");
      if (name.empty() || address.empty() || IsScript(name)) continue;
      files[String::UTF8ToUTF16(address)] = DownloadFolder() + L"\\" + String::UTF8ToUTF16(name);
    }
  }
  return files;
}

std::wstring Headers() {
  Tessary& broker = *Tessary::GetInstance();
  std::string jwt;
  broker.GetJwtFromServer(String::UTF16ToUTF8(broker.GetCurrentToken(JobName)), jwt);
  return L"token: " + String::UTF8ToUTF16(jwt);
}

bool Download(const DownloadAgent::FileMap& files, HANDLE stop) {
  DownloadAgent& agent = *DownloadAgent::GetInstance(
      JobName, [](const std::wstring&, GUID, bool, DownloadAgent::FileMap&) {},
      [](const std::wstring&, DownloadProgressDetail&, std::vector<DownloadProgressDetail>&) {
        return true;
      },
      [](DownloadAgent::FileMap&, ErrorDetails&, bool& isResumed) { isResumed = false; });
  GUID job{};
  return agent.DownloadFiles(JobName, false, files, Headers(), job, stop, NormalPriority);
}

/// Moves what lies directly in one folder to another one.
void MoveFiles(const std::wstring& from, const std::wstring& to) {
  if (!FileSystem::createDirectory(to, true)) return;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(from, error)) {
    const std::wstring name = entry.path().filename().wstring();
    const fs::path place = fs::path(to) / name;
    if (!MoveFileExW(entry.path().c_str(), place.c_str(), MOVEFILE_REPLACE_EXISTING))
      ZLT::g_log.e(L"TolmarHost: %s is not moved, error %u", name.c_str(), GetLastError());
  }
}

/// What the folder's packages are of: the version of their lists.
std::wstring MarkOf(const std::wstring& folder) { return folder + L".version"; }

std::string MarkIn(const std::wstring& folder) {
  char text[32] = {};
  FILE* file = _wfopen(MarkOf(folder).c_str(), L"rb");
  if (file == nullptr) return {};
  const std::size_t count = std::fread(text, 1, sizeof text, file);
  std::fclose(file);
  return {text, count};
}

void Mark(const std::wstring& folder, const std::string& version) {
  FILE* file = _wfopen(MarkOf(folder).c_str(), L"wb");
  if (file == nullptr) return;
  std::fwrite(version.data(), 1, version.size(), file);
  std::fclose(file);
}

}  // namespace

void Fetch(const Json::Value& title, const std::vector<Json::Value>& lists, HANDLE stop) {
  const refhost::EventTitle named(TextIn(title, "l1FruPn"));
  const std::wstring folder = FolderOf(title);
  const std::string version = service::VersionOfLists(lists);
  if (MarkIn(folder) == version) return;
  DeleteFileW(MarkOf(folder).c_str());
  FileSystem::deleteDirectoryOrFile(folder, true);
  const DownloadAgent::FileMap files = PackagesIn(lists);
  if (!files.empty() && Download(files, stop)) {
    MoveFiles(DownloadFolder(), folder);
    Mark(folder, version);
  }
  // With it the machine's lease is given back.
  FileSystem::deleteDirectoryOrFile(DownloadFolder(), true);
}

bool Has(const Json::Value& title) { return !MarkIn(FolderOf(title)).empty(); }

void Return(const Json::Value& title, const std::string& version) {
  const std::wstring folder = FolderOf(title);
  if (MarkIn(folder) == version) MoveFiles(folder, DownloadFolder());
  DeleteFileW(MarkOf(folder).c_str());
  FileSystem::deleteDirectoryOrFile(folder, true);
}

void Clear() {
  const std::wstring folder = refhost::WaitingFolder();
  if (GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES) return;
  FileSystem::deleteDirectoryOrFile(folder, true);
}

}  // namespace waiting
