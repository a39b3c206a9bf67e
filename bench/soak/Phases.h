#pragma once

#include <string>
#include <vector>

/// @return the names of all phases of a visit, in the order of their first coming.
std::vector<std::string> PhaseNames();

/// @param log in, what a visit has written to the agent's log so far.
/// @return name of the phase that it is in.
std::string PhaseOf(const std::string& log);

/// @return how many records a log holds.
unsigned int RecordsIn(const std::string& log);
