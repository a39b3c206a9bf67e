#pragma once

#include <json/value.h>

#include <string>

#include "tools/tolmarctl/Options.h"

/// Prints what `options.subject` means: a result code or a cause's identifier; empty: every cause.
/// @return the program's exit status.
int Explain(const Options& options);

/// @return lines for a person about a result code that is not 0, each indented.
std::string ExplanationOf(unsigned long code);

/// @return lines for a person about a title that was not installed, empty when nothing is known.
/// @param title in, as `InstallTitles` leaves it.
std::string ExplanationOf(const Json::Value& title);

/// @return the identifier of the cause that a result code stands for, empty when nobody has
/// described it.
std::string CauseIdOf(unsigned long code);
