// What an installation, a renewed download address and a status query make of a module's files.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  AgentFixture fresh;
  fresh.AnswerAlways("downloadRequest", Input{data, size}.Text());
  fresh.BeginInstallation();
  fresh.Host().download = [&] {
    DownloadAgent::FileMap files{{L"u/a", L"C:\\kiv\\a.cab"}};
    ErrorDetails expired{5, 0, L"expired"};
    bool resumed = false;
    fresh.Host().onError(files, expired, resumed);
    Require(files.size() == 1 && (!resumed || files.at(L"a.cab") != L"u/a"), "one new address");
    return resumed;
  };
  Json::Value document;
  ReadJson(R"({"swList":[{"l1FruPn":"T","moduleList":[{"moduleFruPn":"M"}]}]})", document);
  fresh.Agent().InstallEntitledSoftware(document, fresh.Cancel(), false);
  const std::string folders = fresh.Host().Transcript({"mkdir ", "delete "});
  Require(folders.empty() || folders == "mkdir C:\\kiv true\ndelete C:\\kiv true\n",
          "no folder left");
  Require(fresh.Agent().GetEntitledSoftwareStatus(document, fresh.Cancel(), false) == 0, "0");
  return 0;
}
