#pragma once

#include <functional>

/// What is measured goes to standard output, one sample a line: NAME VALUE. Scripts make the
/// medians and ratios.
void PrintSample(const char* name, double value);

/// One side of a comparison: runs once and tells how many milliseconds count.
using Side = std::function<double()>;

struct Rounds {
  int count = 5;
  int first = 0;  ///< number of the first one; others may have run in other processes
};

/// Runs both sides `rounds.count` times in turns: the agent is first in even rounds, the floor in
/// odd ones. Prints samples "agent" and "floor".
/// @param floor in, may be empty.
void Compare(const Rounds& rounds, const Side& agent, const Side& floor);
