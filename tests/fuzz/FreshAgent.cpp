#include "tests/fuzz/FreshAgent.h"

AgentFixture::AgentFixture() {
  Host().Reset();
  TolmarAgent::m_pDownloadAgent = nullptr;
  Host().registered = 0;  // so that the start-up asks nothing
  _agent = new TolmarAgent;
  Host().registered = 1;
  Host().stateLock = &_agent->_stateLock;
  Host().Forget();
}

AgentFixture::~AgentFixture() {
  Require(Host().Transcript({"!!"}).empty(), "nothing is called under the state lock");
  for (const HANDLE installer : _installers) CloseHandle(installer);
  if (HoldsInstallLock()) _agent->_downloadAgentLock.ExitLock();
  Host().atStep = nullptr;
  Host().stateLock = nullptr;
  delete _agent;
}

HANDLE AgentFixture::Cancel() const {
  static const HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return never;
}

void AgentFixture::BeginInstallation() {
  SoftwarePackage title;
  title.l1FruPn = L"T";
  title.status = L"downloading";
  SoftwareModule& module = title.modules.emplace_back();
  module.l1FruPn = title.l1FruPn;
  module.moduleFruPn = L"M";
  module.files.emplace_back().name = L"a.cab";
  _agent->SetCurrentInstallingSoftware(title);
  _agent->SetCurrentInstallingModule(module);
  Host().atStep = [this](auto&) { _installers.insert(Host().installer); };
}

void AgentFixture::AnswerAlways(const std::string& type, const std::string& body) {
  _answer = body;
  Host().always[type] = {body};
}

void AgentFixture::RequireQueryCode(unsigned long code, unsigned long refused) {
  const std::size_t requests = Host().Count("POST ");
  if (_answer.empty()) return Require(code == 200, "an empty reply yields its HTTP status");
  if (_answer == "throw") return Require(code == ResultCode::RequestException, "11");
  Require(code == 0 || code == refused || code == ResultCode::BadDocument, "a code of the reply's");
  Require(requests == (code == 0 ? 1 : 4), "three retries for a reply that is no success");
}
