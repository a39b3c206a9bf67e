#pragma once

#include <windows.h>

class TolmarAgent;

/// Gives the agent the configuration's endpoint. What starts its pre-install worker is an endpoint
/// that it was not told before: told here, it starts none.
void TellEndpoint();

/// Starts the agent, once a process; blocks. It asks the service while it starts, with waits of
/// many minutes when that is down, and nothing can end these.
/// @param cancel in, what ends the waiting for it.
/// @return null when that came before the agent had started. It goes on starting: the process is
/// then to be ended hard, which harms nobody, since nothing but a query is under way.
TolmarAgent* StartAgent(HANDLE cancel);

/// Announces DEVICE_CONFIGURE and waits until the agent has dealt with it: the bus delivers to its
/// subscribers one after the other, and the agent was there first.
/// @param cancel in, what ends the waiting.
void AnnounceConfiguration(HANDLE cancel);
