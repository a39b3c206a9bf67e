#pragma once

#include <string>

/// What a module's file is, told by its name (any case; anywhere in it).
bool IsScript(const std::wstring& name);
bool IsCabinet(const std::wstring& name);
