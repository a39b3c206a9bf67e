#pragma once

#include "host/common/Log.h"

/// The agent's one log ("TolmarAgent.log"), opened by `TolmarAgent::Initialize`.
extern ZLT::Log logger;

/// Logs an operation's entry on construction and its exit line when told that the operation ends in
/// order.
class OperationLog {
 public:
  explicit OperationLog(const wchar_t* operation);
  void Exit() const;

 private:
  const wchar_t* _operation;
};
