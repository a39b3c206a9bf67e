#pragma once

#include <string>
#include <vector>

/// @return this program's command line without its name, UTF-8.
std::vector<std::string> Arguments();
