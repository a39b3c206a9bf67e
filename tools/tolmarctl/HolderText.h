#pragma once

#include <string>

/// @param otherThan in, a process that does not count; 0: all count.
/// @return who installs on this machine: "process 1234 (C:\...\TolmarHost.exe) since ...", UTF-8;
/// empty when nobody does.
std::string HolderText(unsigned long otherThan = 0);
