#include "tests/unit/AgentFixture.h"

#include <sstream>

namespace {

std::string Outcome(unsigned long code, const Json::Value& document) {
  std::string text = std::to_string(code) + " ";
  for (const Json::Value& title : document["swList"]) {
    const Json::Value& progress = title["progress"];
    text +=
        title["status"].asString() + " " + (progress.isInt() ? "int" : progress.asString()) + ";";
  }
  return text;
}

}  // namespace

Json::Value Parsed(const std::string& text) {
  Json::Value document;
  std::istringstream(text) >> document;
  return document;
}

Json::Value Titles(const std::string& titles) {
  Json::Value document = Parsed(R"({"swList":[]})");
  std::istringstream words(titles);
  for (std::string word; words >> word;) {
    Json::Value& title = document["swList"].append(Parsed(R"({"moduleList":[]})"));
    title["l1FruPn"] = word.substr(0, 1);
    if (word[1] == '!') title["preinstallSw"] = true;
    for (const char module : word.substr(word.find(':') + 1)) {
      title["moduleList"].append(Json::Value())["moduleFruPn"] = std::string(1, module);
    }
  }
  return document;
}

Reply Files(const std::string& files) {
  std::string list;
  std::istringstream words(files);
  for (std::string word; words >> word;) {
    const std::string name = word.substr(0, word.find('='));
    const std::string url = name == word ? "u/" + name : word.substr(name.size() + 1);
    if (!list.empty()) list += ',';
    list += R"({"name":")" + name + R"(","downloadUrl":")" + url + "\"}";
  }
  return Result(R"({"code":0,"fileList":[)" + list + "]}");
}

const std::vector<Operation> Queries{
    {"HasEntitledSoftware", "RequestHasEntitlement", "hasEntitlement", 29, R"("deviceId":"D-1")",
     [e = std::uint8_t{}](auto& agent) mutable { return agent.HasEntitledSoftware(e); }},
    {"GetEntitledSoftware", "RequestEntitlement", "entitlement", 30, R"("deviceId":"D-1")",
     [v = Json::Value()](auto& agent) mutable { return agent.GetEntitledSoftware(v); }},
    {"GetDownloadFiles", "RequestDownload", "downloadRequest", 31,
     R"("deviceId":"D-1","l1FruPn":"P","moduleFruPn":"M")",
     [v = Json::Value()](auto& agent) mutable { return agent.GetDownloadFiles(v, L"P", L"M"); }}};

const std::vector<Operation> Reports{
    {"", "RequestDownloadProgress", "downloadProgress", 32,
     R"("l1FruPn":"P","moduleFruPn":"M","action":-1,"message":"S","fileName":"F","progress":-7,"custDeviceDate":"T")",
     [](auto& a) { return a.ReportDownloadProgress(L"P", L"M", -1, L"S", L"F", L"U", -7, L"T"); }},
    {"", "RequestInstallProgress", "installProgress", 33,
     R"("l1FruPn":"P","moduleFruPn":"M","action":2,"message":"é"\","custDeviceDate":"T")",
     [](auto& a) { return a.ReportInstallProgress(L"P", L"M", 2, L"\u00e9\"\\", L"T"); }}};

const std::vector<Operation> Requests{Queries[0], Queries[1], Queries[2], Reports[0], Reports[1]};

const Reply Preinstall = Result(R"({"code":0,"hasEntitlement":true,"hasPreinstallSw":true})");

AgentFixture::AgentFixture() {
  fake.Reset();
  cancel = fake.Name(CreateEventW(nullptr, TRUE, FALSE, nullptr), "cancel");
  TolmarAgent::_serverUrl.clear();
  TolmarAgent::_realm.clear();
  StartQuietly();
}

AgentFixture::~AgentFixture() {
  Destroy();
  CloseHandle(cancel);
  EXPECT_EQ(fake.Transcript({"!!"}), "");
}

TolmarAgent& AgentFixture::Start() {
  Destroy();
  TolmarAgent::m_pDownloadAgent = nullptr;  // its callbacks are the agent's before
  fake.Forget();
  _agent = new TolmarAgent;
  fake.Name(_agent->_hStopEvent, "stop");
  fake.stateLock = &_agent->_stateLock;
  return *_agent;
}

void AgentFixture::StartQuietly() {
  const int registered = std::exchange(fake.registered, 0);
  Start();
  fake.registered = registered;
  fake.Forget();
}

void AgentFixture::Destroy() {
  JoinWorker();
  fake.stateLock = nullptr;
  delete std::exchange(_agent, nullptr);
}

std::string AgentFixture::Install(const std::string& titles, bool preinstallOnly) {
  Json::Value document = Titles(titles);
  fake.Forget();
  const unsigned long code = Agent().InstallEntitledSoftware(document, cancel, preinstallOnly);
  return Outcome(code, document);
}

std::string AgentFixture::Check(const std::string& titles, bool preinstallOnly) {
  Json::Value document = Titles(titles);
  fake.Forget();
  const unsigned long code = Agent().GetEntitledSoftwareStatus(document, cancel, preinstallOnly);
  return Outcome(code, document);
}

std::string AgentFixture::Poll(Json::Value document) {
  const unsigned long code = Agent().GetInstallEntitledSoftwareStatus(document);
  return Outcome(code, document);
}

bool AgentFixture::Progress(std::uint64_t done, std::uint64_t total, std::wstring job) {
  DownloadProgressDetail whole{done, total, 1, 2};
  std::vector<DownloadProgressDetail> each;
  return fake.onProgress(job, whole, each);
}

void AgentFixture::Complete(bool success, std::wstring job) {
  DownloadAgent::FileMap files;
  fake.onComplete(job, GUID{}, success, files);
}

void AgentFixture::Notify(bool vrx, unsigned topic, unsigned state) {
  ZLTNotificationData data(vrx, topic, state);
  fake.Forget();
  fake.onNotification(data);
}

void AgentFixture::ReportDownload(const std::wstring& title, const std::wstring& module) {
  SoftwareModule reported;
  reported.l1FruPn = title;
  reported.moduleFruPn = module;
  Agent().ReportDownloadProgressInternal(reported, Downloading, 1, L"");
}

void AgentFixture::JoinWorker() {
  std::thread* worker = _agent == nullptr ? nullptr : _agent->m_pPreinstallThread.load();
  if (worker != nullptr && worker->joinable()) worker->join();
}
