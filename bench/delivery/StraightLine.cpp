#include "bench/delivery/StraightLine.h"

#include <json/reader.h>
#include <json/value.h>

#include <memory>
#include <stdexcept>

#include "host/common/DateTime.h"
#include "host/common/DownloadAgent.h"
#include "host/common/EpUrlProvider.h"
#include "host/common/FileSystem.h"
#include "host/common/HttpRequest.h"
#include "host/common/PackageExtractor.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "host/core/DeviceIdAgent.h"
#include "host/session/Tessary.h"
#include "install/ScriptCommand.h"

namespace StraightLine {

namespace {

constexpr const wchar_t* JobName = L"StraightLine";

void Require(bool done, const char* step) {
  if (!done) throw std::runtime_error(std::string("the straight line failed: ") + step);
}

std::wstring Wide(const std::string& text) { return ZLT::String::UTF8ToUTF16(text); }
std::string Bytes(const RequestBody& body) { return ZLT::String::UTF16ToUTF8(body.Close()); }

std::wstring DeviceId() {
  std::wstring id;
  DeviceIdAgent::GetInstance(DeviceIdentityService::GetInstance())->GetDeviceID(id);
  return id;
}

/// One module on its way.
struct Module {
  std::wstring title;
  std::wstring name;
  std::vector<File> files;
  bool reported = false;  ///< its progress, which is reported once a minute at most

  RequestBody Report(const wchar_t* type, int action) const {
    RequestBody body(type);
    body.Text(L"l1FruPn", title).Text(L"moduleFruPn", name).Number(L"action", action);
    return body;
  }

  void ReportDownload(const DownloadProgressDetail& total) {
    if (reported) return;
    reported = true;
    const auto percent = static_cast<int>(100 * total.bytesTransferred / total.bytesTotal);
    for (const File& file : files) {
      if (&file == &files.back()) continue;  // the script's progress is not reported
      Post(L"downloadProgress", Bytes(Report(L"downloadProgress", 0)
                                          .Text(L"message", L"")
                                          .Text(L"fileName", file.name)
                                          .Number(L"progress", percent)
                                          .Text(L"custDeviceDate", ZLT::System::GetTime())));
    }
  }

  void ReportInstall(int action) const {
    Post(L"installProgress", Bytes(Report(L"installProgress", action)
                                       .Text(L"message", L"")
                                       .Text(L"custDeviceDate", ZLT::System::GetTime())));
  }
};

/// Whose download is running: the service keeps the first callbacks that it gets.
Module* g_module = nullptr;

void Download(Module& module, const std::wstring& folder) {
  DownloadAgent* service = DownloadAgent::GetInstance(
      JobName, nullptr,
      [](const std::wstring&, const DownloadProgressDetail& total, auto&) {
        g_module->ReportDownload(total);
        return true;
      },
      nullptr);
  DownloadAgent::FileMap files;
  for (const File& file : module.files) files[file.url] = folder + L"\\" + file.name;
  GUID id{};
  g_module = &module;
  Require(service->DownloadFiles(JobName, false, files, Headers(), id, nullptr, 1), "download");
}

void RunScripts(const Module& module, const std::wstring& folder, const std::wstring& unpacked) {
  HANDLE process = nullptr;
  Require(ZLT::ProcessWrap::CreateProcessInUserSession(
              ScriptCommand::Install(unpacked + L"\\install.ps1"), unpacked, process, true) != 0,
          "installer");
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
  Require(ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(
              ScriptCommand::CheckAfterInstall(folder + L"\\" + module.files.back().name), folder,
              true, nullptr) != 0,
          "check script");
}

void InstallModule(Module& module, const std::wstring& folder) {
  Download(module, folder);
  const std::wstring unpacked =
      ZLT::PackageExtractor::ExtractCab(folder + L"\\" + module.files.front().name);
  Require(!unpacked.empty(), "package");
  module.ReportInstall(0);
  RunScripts(module, folder, unpacked);
  module.ReportInstall(2);
}

/// The last script's process may still hold its folder for a moment.
void DeleteFolder(const std::wstring& folder) {
  constexpr DWORD PauseMs = 1000;
  if (FileSystem::deleteDirectoryOrFile(folder, true)) return;
  Sleep(PauseMs);
  Require(FileSystem::deleteDirectoryOrFile(folder, true), "deletion");
}

void InstallTitle(const Json::Value& title) {
  const std::string name = title["l1FruPn"].asString();
  std::vector<Module> modules;
  for (const Json::Value& element : title["moduleList"]) {
    const std::string module = element["moduleFruPn"].asString();
    modules.push_back({Wide(name), Wide(module), FilesOf(name, module)});
  }
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  FileSystem::createDirectory(folder, true);
  for (Module& module : modules) InstallModule(module, folder);
  DeleteFolder(folder);
}

}  // namespace

std::wstring Headers() {
  const std::wstring session = Tessary::GetInstance()->GetCurrentToken(L"StraightLine");
  std::string token;
  Require(Tessary::GetInstance()->GetJwtFromServer(ZLT::String::UTF16ToUTF8(session), token) == 0,
          "token");
  return L"Content-Type: application/json\r\ntoken: " + Wide(token);
}

std::wstring UrlOf(const wchar_t* type) {
  std::wstring base;
  EpUrlProvider::GetInstance()->GetBaseUrl(base);
  return base + L"/mp/zlt/v2/" + type + L"?deviceId=" + DeviceId();
}

std::string DeviceBody(const wchar_t* type) {
  return Bytes(RequestBody(type).Text(L"deviceId", DeviceId()));
}

std::string Post(const wchar_t* type, const std::string& body) {
  ZLT::HttpRequest request(UrlOf(type).c_str(), L"", nullptr, ZLT::HttpTimeouts::DEFAULT);
  const bool answered =
      request.doPost(body.data(), static_cast<unsigned long>(body.size()), Headers().c_str());
  Require(answered && request.getStatusCode() == 200, "exchange");
  return request.getStream().str();
}

std::vector<File> FilesOf(const std::string& title, const std::string& module) {
  const std::string reply =
      Post(L"downloadRequest", Bytes(RequestBody(L"downloadRequest")
                                         .Text(L"deviceId", DeviceId())
                                         .Text(L"l1FruPn", Wide(title))
                                         .Text(L"moduleFruPn", Wide(module))));
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::Value root;
  reader->parse(reply.data(), reply.data() + reply.size(), &root, nullptr);
  std::vector<File> files;
  for (const Json::Value& file : root["result"]["fileList"]) {
    files.push_back({Wide(file["name"].asString()), Wide(file["downloadUrl"].asString())});
  }
  Require(!files.empty(), "list of files");
  return files;
}

void Install(const Json::Value& document) {
  for (const Json::Value& title : document["swList"]) InstallTitle(title);
}

}  // namespace StraightLine
