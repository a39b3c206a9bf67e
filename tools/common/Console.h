#pragma once

#include <windows.h>

#include <cstddef>

/// The console, while something is shown on it: it takes text for UTF-8, and sequences for colours
/// where these are wanted. Left as it was found, since the mode is the console's, not this
/// program's ("SetConsoleMode function", Microsoft). Objects nest.
class Console {
 public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// @return true when standard output is a terminal that shows colours and nobody has declined
  /// them (NO_COLOR).
  bool HasColour() const { return _hasColour; }

  /// @return the columns of the terminal that standard output is; 0 when it is none.
  static std::size_t Columns();

 private:
  const HANDLE _output = GetStdHandle(STD_OUTPUT_HANDLE);
  const UINT _codePage = GetConsoleOutputCP();
  DWORD _mode = 0;
  bool _hasColour = false;
};
