#pragma once

#include <string>
#include <vector>

/// @return this process's arguments as UTF-8, without the program's name: what `main` is given has
/// lost what the PC's code page does not know.
std::vector<std::string> WindowsArguments();
