#include <benchmark/benchmark.h>
#include <json/value.h>

#include "agent/StateGuard.h"
#include "agent/TolmarAgent.h"
#include "bench/common/Document.h"
#include "bench/micro/QuietHost.h"
#include "host/common/CriticalSection.h"
#include "progress/DownloadJob.h"

namespace {

constexpr int ModulesOfTitle = 2, FilesOfModule = 3;
constexpr int TitlesOfDocument = 1000;

std::string NameOf(int file) {
  return file == 0 ? "package.cab" : file == 1 ? "data.bin" : "check.ps1";
}

std::string FileListReply() {
  Json::Value reply;
  reply["result"]["code"] = 0;
  for (int i = 0; i < FilesOfModule; ++i) {
    Json::Value& file = reply["result"]["fileList"].append(Json::objectValue);
    file["name"] = NameOf(i);
    file["size"] = 1000000;
    file["crc"] = "0A1B2C3D";
    file["downloadUrl"] = "https://files.example/titles/20QN11000US/" + NameOf(i) +
                          "?expires=1767268800&signature=" + std::string(64, 'a');
  }
  return reply.toStyledString();
}

/// @return a document with so many titles, the last of them the one that gets installed.
Json::Value Titles(int count) {
  std::vector<std::string> modules;
  modules.reserve(ModulesOfTitle);
  for (int module = 0; module < ModulesOfTitle; ++module) {
    modules.push_back("5M10V" + std::to_string(10000 + module));
  }
  Json::Value document;
  for (int i = 1; i <= count; ++i) {
    AddTitle(document, "20QN" + std::to_string(10000 + TitlesOfDocument - count + i) + "US",
             modules);
  }
  return document;
}

/// Runs `work` in the middle of the download of a title's first module.
void DuringDownload(const std::function<void()>& work) {
  static const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  Quiet().reply = FileListReply();
  Quiet().onDownload = work;
  Json::Value document = Titles(1);
  TolmarAgent::GetInstance()->InstallEntitledSoftware(document, cancel, false);
}

bool ProgressEvent() {
  DownloadProgressDetail whole{400000, 2000000, 1, FilesOfModule};
  std::vector<DownloadProgressDetail> each;
  return Quiet().onProgress(DownloadJobName, whole, each);
}

void PacedProgressEvent(benchmark::State& state) {
  DuringDownload([&] {
    ProgressEvent();  // the one that goes out
    while (state.KeepRunning()) {
      if (!ProgressEvent()) state.SkipWithError("the event asks for a stop");
    }
  });
}
BENCHMARK(PacedProgressEvent);

SoftwarePackage InstalledTitle() {
  SoftwarePackage title;
  title.l1FruPn = L"20QN11000US";
  title.status = L"downloading";
  for (int i = 0; i < ModulesOfTitle; ++i) {
    SoftwareModule& module = title.modules.emplace_back();
    module.l1FruPn = title.l1FruPn;
    module.moduleFruPn = L"5M10V10000";
    for (int file = 0; file < FilesOfModule; ++file) {
      const std::string name = NameOf(file);
      ModuleFile& record = module.files.emplace_back();
      record.name.assign(name.begin(), name.end());
      record.crc = L"0A1B2C3D";
      record.downloadUrl = std::wstring(114, L'u') + record.name;
      record.size = 1000000;
    }
  }
  return title;
}

/// What a progress event has to copy, whatever comes of it: the module, then the title with all its
/// modules, each under the state lock.
void CopiesOfProgressEvent(benchmark::State& state) {
  const SoftwarePackage title = InstalledTitle();
  CriticalSection lock;
  const auto copy = [&lock](const auto& record) {
    const StateGuard guard(lock);
    return record;
  };
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(copy(title.modules.front()));
    benchmark::DoNotOptimize(copy(title));
  }
}
BENCHMARK(CopiesOfProgressEvent);

void StatusAnswer(benchmark::State& state) {
  Json::Value document = Titles(TitlesOfDocument);
  DuringDownload([&] {
    while (state.KeepRunning()) {
      if (TolmarAgent::GetInstance()->GetInstallEntitledSoftwareStatus(document) != 0) {
        state.SkipWithError("the title is not found");
      }
    }
  });
}
BENCHMARK(StatusAnswer);

}  // namespace
