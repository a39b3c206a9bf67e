#pragma once

#include "tools/tolmarctl/Commands.h"

/// Prints what a command came to on standard output: one JSON object, or lines for a person.
void PrintOutcome(const Options& options, const Outcome& outcome);
