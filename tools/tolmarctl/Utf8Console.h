#pragma once

#include <windows.h>

#include <cstdio>

/// A console shows its own code page unless it is told that text is UTF-8; it is left as it was.
class Utf8Console {
 public:
  Utf8Console() { SetConsoleOutputCP(CP_UTF8); }
  ~Utf8Console() {
    std::fflush(stdout);
    SetConsoleOutputCP(_before);
  }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  const UINT _before = GetConsoleOutputCP();
};
