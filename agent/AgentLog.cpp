#include "agent/AgentLog.h"

ZLT::Log logger;

OperationLog::OperationLog(const wchar_t* operation) : _operation(operation) {
  logger.d(L"TolmarAgent::%s: Entry", _operation);
}

void OperationLog::Exit() const { logger.d(L"TolmarAgent::%s: Exit", _operation); }
