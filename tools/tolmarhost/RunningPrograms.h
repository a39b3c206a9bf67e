#pragma once

#include <string>
#include <vector>

/// @param programs in, names without a folder, UTF-8; upper and lower case are the same.
/// @return the first of them that runs in any session, as it was given; empty: none does.
std::string FirstRunning(const std::vector<std::string>& programs);
