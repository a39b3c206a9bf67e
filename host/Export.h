#pragma once

/// How the names of the host suite reach a module. The build defines it: empty where the suite is
/// linked statically, `__declspec(dllexport)` inside the suite itself. Users of the suite's DLLs
/// define nothing.
#ifndef ZLT_API
#define ZLT_API __declspec(dllimport)
#endif
