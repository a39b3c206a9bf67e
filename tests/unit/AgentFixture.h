#pragma once

#include <gtest/gtest.h>
#include <json/json.h>

#include "agent/TolmarAgent.h"
#include "tests/unit/FakeHost.h"

Json::Value Parsed(const std::string& text);
/// @return a document with these titles: "A:MN P!:M" are A with the modules M and N, and P, which
/// is for device set-up, with M.
Json::Value Titles(const std::string& titles);
/// @return a reply with these files: "a.cab b.cab=u/a" are a.cab at "u/a.cab" and b.cab at "u/a".
Reply Files(const std::string& files);
/// @return a reply of the service with this "result".
inline Reply Result(const std::string& result) { return {"{\"result\":" + result + "}"}; }

/// One of the five requests, as a test makes it and as it must reach the service.
struct Operation {
  std::string query;  ///< name of the public operation; empty for a report
  std::string name, type;
  unsigned long code;      ///< what it yields without a token
  std::string parameters;  ///< in its body
  std::function<unsigned long(TolmarAgent&)> call;

  bool IsReport() const { return query.empty(); }
  unsigned long Refused() const { return code + 5; }
  std::string Body() const {
    return R"({"type":")" + type + R"(","parameters": { )" + parameters + "}}";
  }
};
extern const std::vector<Operation> Queries, Reports, Requests;
/// The answer to a has-entitlement request that lets the pre-install worker start.
extern const Reply Preinstall;

/// Gives every test a fresh agent and a fresh fake host.
class AgentFixture : public ::testing::Test {
 protected:
  AgentFixture();
  ~AgentFixture() override;

  /// @return a new agent in the place of the one before; its start-up is the transcript's start.
  TolmarAgent& Start();
  /// Starts an agent on an unregistered device, with an empty transcript.
  void StartQuietly();
  void Destroy();
  TolmarAgent& Agent() { return *_agent; }
  /// Each of these @return the result code and what the titles then are: "code status
  /// progress;...".
  std::string Install(const std::string& titles, bool preinstallOnly = false);
  std::string Check(const std::string& titles, bool preinstallOnly = false);
  /// Polls the title "T"; forgets nothing.
  std::string Poll(Json::Value document = Titles("T:"));
  /// An event of the download service: a step of a job, or its end.
  bool Progress(std::uint64_t done, std::uint64_t total, std::wstring job = L"ZLTKIVJob");
  void Complete(bool success, std::wstring job = L"ZLTKIVJob");

  unsigned long Call(const Operation& operation) { return fake.Forget(), operation.call(Agent()); }
  void Notify(bool vrx, unsigned topic, unsigned state);
  void ReportDownload(const std::wstring& title, const std::wstring& module);
  void JoinWorker();
  static std::wstring ServerUrl() { return TolmarAgent::_serverUrl; }
  HANDLE StopEvent() { return Agent()._hStopEvent; }
  std::thread* Worker() { return Agent().m_pPreinstallThread; }
  bool HoldsInstallLock() { return FakeHost::Holds(&Agent()._downloadAgentLock); }
  void IgnoreDownloadEvents() { Agent()._ignoreDownloadEvents = true; }
  bool HasPreinstallFlag() { return Agent()._hasPreinstallSw; }

  FakeHost& fake = FakeHost::Get();
  HANDLE cancel;

 private:
  TolmarAgent* _agent = nullptr;
};
