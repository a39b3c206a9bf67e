#pragma once

#include <string>
#include <vector>

#include "tools/common/Timeline.h"
#include "tools/tolmarctl/Options.h"

/// @return the bytes of a file, empty when there is none.
std::string ReadWholeFile(const std::wstring& path);

/// Writes a file that must not be there yet; says on standard error why it could not.
bool WriteNewFile(const std::string& path, const std::string& bytes);

/// @return what this device's events tell.
std::vector<timeline::Run> ReadRuns();

/// Tells what has happened on this device: as lines, as JSON, or as the page `options.file`.
/// @return the program's exit status.
int Report(const Options& options);
