#pragma once

#include <filesystem>
#include <string>

#include "tools/scriptrunner/Cmdlet.h"

namespace scriptrunner {

Value AddContent(const Arguments& arguments, System& system);
Value CopyItem(const Arguments& arguments, System& system);
Value GetContent(const Arguments& arguments, System& system);
Value NewItem(const Arguments& arguments, System& system);
Value RemoveItem(const Arguments& arguments, System& system);
Value SetContent(const Arguments& arguments, System& system);
Value TestPath(const Arguments& arguments, System& system);

/// @return the path that a script's text names: its backslashes separate folders on every system.
std::filesystem::path ToPath(const std::string& text);

/// @return the file's bytes; throws CommandFailure when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

}  // namespace scriptrunner
