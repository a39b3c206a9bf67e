#pragma once

#include "tools/tolmarctl/Commands.h"

/// Installs the titles of `document`, one call of the agent for each, so that each one's code and
/// cause is known. The service sees what one call for all of them would send.
/// @param document in and out, as the agent takes it; a title that was taken up gets "code" too,
/// and one that failed "cause", "why" and "installerOutput", as far as anything is known.
/// @return the code of the last title that was taken up.
unsigned long InstallTitles(TolmarAgent& agent, Json::Value& document, const Options& options,
                            HANDLE cancel);
