#pragma once

#include "tools/tolmarctl/Commands.h"

/// Tells what an installation would do, without doing it: titles, modules, files with their sizes,
/// what the host would refuse, room on the disk, who installs now. Unless the options forbid it the
/// check scripts are asked what is installed, and fetched for that. Addresses, which are signed,
/// are left out.
/// @param cancel in, the cancel event: what is known by then is told.
/// @return code 0; the last query's that failed; 39 for a list of another shape than agreed, as an
/// installation would come to.
Outcome Plan(TolmarAgent& agent, const Options& options, HANDLE cancel);

/// Prints the document of a plan for a person.
void PrintPlan(const Json::Value& plan);
