#pragma once

#include <functional>

#include "agent/TolmarAgent.h"

/// One query to the service that is retried: how it is sent, how its reply is read, what is logged.
struct TolmarAgent::Query {
  const wchar_t* name;  ///< stands first in the log lines
  std::function<VRXResponse()> request;
  /// Reads a reply into the caller's out-values and the return code; true: send the request again.
  std::function<bool(unsigned long& retCode, const VRXResponse& response)> parse;
  const wchar_t* breakFormat = nullptr;  ///< line for leaving the loop; null: none
  const wchar_t* resultFormat = L"%s: retCode = %ul";
};
