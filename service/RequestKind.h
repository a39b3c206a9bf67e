#pragma once

#include "agent/TolmarAgent.h"

/// What distinguishes one of the five requests from the others in the framing.
struct TolmarAgent::RequestKind {
  const wchar_t* operation;   ///< stands in the log lines
  const wchar_t* type;        ///< path word and "type" of the body
  unsigned long noTokenCode;  ///< return code without a token
  bool isReport;  ///< logs its payload; a failed exchange returns `noTokenCode`, never the status
};
