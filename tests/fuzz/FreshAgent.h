#pragma once

#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "tests/fuzz/Input.h"
#include "tests/unit/FakeHost.h"

/// A fresh agent on the happy fake host for every input. It has the name of the agent's friend.
class AgentFixture {
 public:
  AgentFixture();
  /// Requires that the agent kept to its lock order.
  ~AgentFixture();
  AgentFixture(const AgentFixture&) = delete;
  AgentFixture& operator=(const AgentFixture&) = delete;

  TolmarAgent& Agent() { return *_agent; }
  FakeHost& Host() { return FakeHost::Get(); }
  HANDLE Cancel() const;
  /// Makes the title T with the module M the one that is being installed.
  void BeginInstallation();
  bool HoldsInstallLock() { return FakeHost::Holds(&_agent->_downloadAgentLock); }

  /// Makes `body` the service's reply to every request of a type.
  void AnswerAlways(const std::string& type, const std::string& body);
  /// Requires what holds of every query's code: it tells of the reply to `AnswerAlways`, and a
  /// reply that is not a success was asked for four times.
  void RequireQueryCode(unsigned long code, unsigned long refused);

 private:
  TolmarAgent* _agent;
  std::string _answer;
  std::set<HANDLE> _installers;  ///< the agent leaves them open
};
