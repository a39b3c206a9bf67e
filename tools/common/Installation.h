#pragma once

#include <json/value.h>
#include <windows.h>

class TolmarAgent;

/// Installs one title, and tells of it as events.
/// @param title in and out, as the agent takes it and of the agreed shape (see `IsTitle`): what has
/// another ends an installation in the middle, which only the agent can do. It gets "code", and
/// after a failure "cause", "why" and "installerOutput", as far as anything is known.
/// @param cancel in, the cancel event.
/// @return the agent's code.
unsigned long InstallTitle(TolmarAgent& agent, Json::Value& title, HANDLE cancel);

/// Installs the titles of `document`, one call of the agent for each, so that each one's code and
/// cause is known. The service sees what one call for all of them would send.
/// @param document in and out, as the agent takes it; its titles as above.
/// @param preinstallOnly in, true: only titles that are meant for device set-up.
/// @return the code of the last title that was taken up.
unsigned long InstallTitles(TolmarAgent& agent, Json::Value& document, bool preinstallOnly,
                            HANDLE cancel);
