#pragma once

#include <json/value.h>
#include <windows.h>

#include "tools/tolmarctl/Options.h"

class TolmarAgent;

/// What a command came to.
struct Outcome {
  unsigned long code = 0;       ///< the agent's
  Json::Value result;           ///< the agent's document; null for `entitled`
  bool hasEntitlement = false;  ///< `entitled` only
  bool isDone = true;           ///< false: `configure` or `plan` gave up before all was done
};

/// Runs the command of `options` to its end. @param cancel in, the cancel event.
Outcome RunCommand(TolmarAgent& agent, const Options& options, HANDLE cancel);
