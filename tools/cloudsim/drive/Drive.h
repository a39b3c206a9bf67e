#pragma once

namespace cloudsim {

/// Plays devices against a service: `cloudsim drive URL [OPTION…]`. Prints what it came to.
/// @param argv in, the command line from the word "drive" on.
/// @return the exit status: 0, 1 when a device did not get all, 2 for bad usage.
int Drive(int argc, char** argv);

}  // namespace cloudsim
