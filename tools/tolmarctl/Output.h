#pragma once

#include "tools/tolmarctl/Commands.h"

/// Prints a document as one line of ASCII without comments, on standard output, at once.
void PrintJsonLine(const Json::Value& document);

/// Prints lines of UTF-8 for a person on standard output.
void PrintLines(const std::string& lines);

/// Tells a person on standard error what is wrong with what a command was given or goes by.
/// @return the program's exit status.
int Complain(const Options& options, const std::string& what);

/// Prints what a command came to: one JSON object on standard output, or tables for a person there
/// and what went wrong on standard error.
/// @return false when an entry of a reply has not the shape that is agreed upon; it is printed as
/// it is.
bool PrintOutcome(const Options& options, const Outcome& outcome);
