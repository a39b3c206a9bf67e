#pragma once

/// How the agent's names reach a module. The build of the library and of the tests defines it;
/// users of the DLL define nothing.
#ifndef TOLMAR_API
#define TOLMAR_API __declspec(dllimport)
#endif
